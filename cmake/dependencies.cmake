# Everything comes from the system's packages; scripts/setup installs them.
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(ZLIB REQUIRED)
find_package(CURL REQUIRED)
pkg_check_modules(TINYXML REQUIRED IMPORTED_TARGET tinyxml)

find_path(JSMN_INCLUDE_DIR jsmn.h REQUIRED)
find_path(MBEDTLS_INCLUDE_DIR mbedtls/md5.h REQUIRED)
find_library(MBEDCRYPTO_LIBRARY mbedcrypto REQUIRED)

find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)
if(KVUTIL_TESTS)
  find_package(GTest REQUIRED)
endif()
if(KVUTIL_BENCH)
  find_package(benchmark REQUIRED)
  find_package(spdlog REQUIRED)
endif()

# The vendor's signal primitives, where they are installed; without them the C library does the same work.
find_path(IPP_INCLUDE_DIR ipps.h)
find_library(IPPS_LIBRARY ipps)
find_library(IPPCORE_LIBRARY ippcore)
