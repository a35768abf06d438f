// Libraries opened at run time, as far as loaders differ.
#pragma once

#include <cstddef>

namespace kv::platform {

/// dlopen, out of which an exception may come that the start of the library let out.
void* openLibrary(const char* path, int flags);

/// The same for a library that may lie in the working directory: a bare name counts as one there, too.
void* openFromHere(const char* path, int flags);

/// The folder of this library's own file, up to and with its last "/". False, with an empty target, where the loader
/// does not tell it and for one that does not fit.
bool ownLibraryFolder(char* target, std::size_t size) noexcept;

}  // namespace kv::platform
