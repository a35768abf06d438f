# What every target of this tree is compiled with. Linked privately, so that no user inherits it.
add_library(kvutil_compiler INTERFACE)
target_compile_options(kvutil_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Werror
  $<$<COMPILE_LANGUAGE:CXX>:-Wconversion -Wnon-virtual-dtor -Woverloaded-virtual>)
# -O3 gains nothing here and costs compile time.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_C_FLAGS_RELEASE "-O2 -DNDEBUG")
target_compile_definitions(kvutil_compiler INTERFACE _FILE_OFFSET_BITS=64)

if(KVUTIL_SANITIZE)
  # A pointer or a signed result that the contract lets wrap is cast before it wraps; everything else stops the run.
  target_compile_options(kvutil_compiler INTERFACE
    -fsanitize=${KVUTIL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kvutil_compiler INTERFACE -fsanitize=${KVUTIL_SANITIZE})
endif()
