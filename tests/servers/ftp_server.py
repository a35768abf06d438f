"""An FTP server for one user and the folder given, on a free port of 127.0.0.1, whose number is the first line out."""

import sys

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.log import config_logging
from pyftpdlib.servers import FTPServer

authorizer = DummyAuthorizer()
# Enter, list, retrieve, append, delete, rename, make folders, store, change mode and time.
authorizer.add_user("user", "secret", sys.argv[1], perm="elradfmwMT")


class Handler(FTPHandler):
    """One session, which does not keep a stranger waiting before it refuses him."""

    auth_failed_timeout = 0


Handler.authorizer = authorizer
config_logging(level=30)  # warnings and errors only
server = FTPServer(("127.0.0.1", 0), Handler)
print(server.socket.getsockname()[1], flush=True)
server.serve_forever()
