# Compiling through ccache where it is installed: much of what the presets compile is the same. The sloppiness is what
# precompiled headers need; the base folder lets build trees, and clones beside each other, share what they compiled.
find_program(KVUTIL_CCACHE ccache)
if(KVUTIL_CCACHE)
  cmake_path(GET PROJECT_SOURCE_DIR PARENT_PATH _base)
  set(_launcher ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${_base} CCACHE_NOHASHDIR=1
    CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${KVUTIL_CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${_launcher})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${_launcher})
endif()
