# The list of exported names: one file a folder, one name a line, "#" starts a comment. The linker exports exactly
# these; tests/exports compares the lists with what the built library shows. s3.txt is for builds with S3 support alone.
#
# GNU ld and lld take it as a version script, the linker of macOS as a plain list of symbols, which there begin with an
# underscore. No machine here has linked the latter.
file(GLOB export_lists CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports/*.txt)
if(NOT KVUTIL_S3)
  list(REMOVE_ITEM export_lists ${PROJECT_SOURCE_DIR}/cmake/exports/s3.txt)
endif()
# Strings are part of a C++ name, and each C++ library has its own.
set(other_cxx_library libcxx)
if(APPLE)
  set(other_cxx_library libstdcxx)
endif()
list(FILTER export_lists EXCLUDE REGEX "_${other_cxx_library}\\.txt$")
set(version_script "{\n  global:\n")
set(symbol_list "")
foreach(export_list IN LISTS export_lists)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${export_list})
  file(STRINGS ${export_list} exported_names REGEX "^[A-Za-z_]")
  foreach(exported_name IN LISTS exported_names)
    string(APPEND version_script "    ${exported_name};\n")
    string(APPEND symbol_list "_${exported_name}\n")
  endforeach()
endforeach()
string(APPEND version_script "  local: *;\n};\n")

if(APPLE)
  set(linker_list ${PROJECT_BINARY_DIR}/generated/kvutil.exports)
  file(CONFIGURE OUTPUT ${linker_list} CONTENT "${symbol_list}" @ONLY)
  target_link_options(kvutil PRIVATE LINKER:-exported_symbols_list,${linker_list})
else()
  set(linker_list ${PROJECT_BINARY_DIR}/generated/kvutil.map)
  file(CONFIGURE OUTPUT ${linker_list} CONTENT "${version_script}" @ONLY)
  # Once loaded it stays: a host that unloads it would take the log's buffer away from the C library, which still writes
  # that out at the end, and the code away from threads that are about to leave it.
  target_link_options(kvutil PRIVATE LINKER:--version-script=${linker_list} LINKER:-z,nodelete)
  # A sanitizer's calls are found in the program. The linker of macOS refuses undefined names by itself.
  if(NOT KVUTIL_SANITIZE)
    target_link_options(kvutil PRIVATE LINKER:--no-undefined)
  endif()
endif()
set_target_properties(kvutil PROPERTIES LINK_DEPENDS ${linker_list})
