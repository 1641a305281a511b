# One interface target carries the settings every Gorvan target shares:
# language standard, warnings, defines and the optional sanitizers.
add_library(gorvan_common INTERFACE)
target_compile_features(gorvan_common INTERFACE cxx_std_20)
target_compile_options(gorvan_common INTERFACE -Wall -Wextra -Wno-unused-parameter)
target_compile_definitions(gorvan_common INTERFACE
  _FILE_OFFSET_BITS=64
  GORVAN_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
  GORVAN_VERSION_MINOR=${PROJECT_VERSION_MINOR}
  GORVAN_VERSION_REVISION=${PROJECT_VERSION_PATCH})
target_include_directories(gorvan_common INTERFACE ${PROJECT_SOURCE_DIR}/src)

if(GORVAN_WERROR)
  target_compile_options(gorvan_common INTERFACE -Werror)
endif()
# GCC 12 at -O3 reports a false -Wrestrict overlap inside libstdc++'s
# char_traits.h for ordinary std::string concatenation (GCC bug 105329, fixed
# in GCC 13). Only that compiler's optimised builds leave the check out.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(gorvan_common INTERFACE $<$<CONFIG:Release>:-Wno-restrict>)
endif()
if(GORVAN_SANITIZE)
  target_compile_options(gorvan_common INTERFACE
    -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  target_link_options(gorvan_common INTERFACE -fsanitize=address,undefined)
endif()
if(GORVAN_FUZZ)
  target_compile_options(gorvan_common INTERFACE -fsanitize=fuzzer-no-link,address,undefined)
  target_link_options(gorvan_common INTERFACE -fsanitize=address,undefined)
endif()

# gorvan_library(NAME SOURCES...) builds one static library for a src/ folder.
function(gorvan_library name)
  add_library(${name} STATIC ${ARGN})
  target_link_libraries(${name} PUBLIC gorvan_common)
endfunction()
