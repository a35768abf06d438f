# Compiling for macOS on Linux, with the Zig compiler and the system's headers that come with it. scripts/check-macos lays
# out build/check-macos, which holds the compiler and, in its folder prefix, the other libraries' headers; nothing of this
# machine's own /usr is looked at. KVUTIL_MACOS_PROCESSOR is aarch64 or x86_64.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${KVUTIL_MACOS_PROCESSOR})
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KVUTIL_MACOS_PROCESSOR)

cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH _cmake)
cmake_path(GET _cmake PARENT_PATH _root)
set(_work ${_root}/build/check-macos)
set(CMAKE_C_COMPILER ${_work}/zig-cc)
set(CMAKE_CXX_COMPILER ${_work}/zig-c++)
set(CMAKE_C_COMPILER_TARGET ${KVUTIL_MACOS_PROCESSOR}-macos)
set(CMAKE_CXX_COMPILER_TARGET ${KVUTIL_MACOS_PROCESSOR}-macos)
# Wanted by CMake for every Apple system; nothing is installed from here.
set(CMAKE_INSTALL_NAME_TOOL false)
# Stand-ins of the frameworks that are linked with.
set(CMAKE_SHARED_LINKER_FLAGS_INIT -F${_work}/prefix/Frameworks)
set(CMAKE_EXE_LINKER_FLAGS_INIT -F${_work}/prefix/Frameworks)

set(CMAKE_FIND_ROOT_PATH ${_work}/prefix)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} ${_work}/prefix/lib/pkgconfig)
