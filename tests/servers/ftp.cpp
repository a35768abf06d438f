#include "servers/ftp.h"

#include "servers/child_process.h"
#include "servers/server_folder.h"

namespace kvtest {

class FtpServer::Impl {
public:
    ServerFolder folder_{"ftp"};
    std::string root_ = folder_.makeFolder("files");
    ChildProcess process_{{"/usr/bin/python3", KVUTIL_SERVERS_FOLDER "/ftp_server.py", root_}, folder_ / "messages"};
    std::string host_ = "127.0.0.1:" + process_.readLine("the FTP server does not listen");
};

FtpServer::FtpServer() : impl_(std::make_unique<Impl>()) {}
FtpServer::~FtpServer() = default;

const std::string& FtpServer::root() const { return impl_->root_; }
std::string FtpServer::host() const { return impl_->host_; }
std::string FtpServer::url(std::string_view path) const { return "ftp://user:secret@" + host() + std::string(path); }
std::string FtpServer::urlWithoutUser(std::string_view path) const { return "ftp://" + host() + std::string(path); }

}  // namespace kvtest
