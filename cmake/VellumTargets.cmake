# How every target of the project is made: warnings, sanitizers, precompiled headers, ccache.

find_program(VELLUM_CCACHE ccache)
if(VELLUM_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # The precompiled headers need these two allowances to be cached at all.
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${VELLUM_CCACHE})
endif()

# The standard headers that most files include; precompiled once for each target. They are named here and not in a
# header of ours, whose path would keep build folders in other places from sharing what ccache holds.
set(VELLUM_PRECOMPILED <algorithm> <array> <atomic> <cstdint> <cstring> <filesystem> <functional> <map> <memory>
                       <optional> <span> <string> <string_view> <utility> <vector>)

function(vellum_compile_options target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align
                                           -Woverloaded-virtual -Werror -fno-math-errno)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # These warnings are wrong about std::string in g++ 12 (GCC bugs 105329, 105651).
    target_compile_options(${target} PRIVATE -fpch-preprocess -Wno-array-bounds -Wno-restrict -Wno-stringop-overflow
                                             -Wno-stringop-overread)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # A time inside would keep precompiled headers out of ccache.
    target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:SHELL:-Xclang -fno-pch-timestamp>")
  endif()
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    # The tables of functions are filled at the start and then written no more.
    target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now)
    target_compile_options(${target} PRIVATE -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  endif()
  if(VELLUM_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${VELLUM_SANITIZE} -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${VELLUM_SANITIZE})
  endif()
  if(VELLUM_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
endfunction()

# vellum_wing(base SOURCES a.cpp ... LINKS ...): the static library vellum_base of the folder src/base.
function(vellum_wing name)
  cmake_parse_arguments(WING "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  set(target vellum_${name})
  add_library(${target} STATIC ${WING_SOURCES})
  target_include_directories(${target} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${target} PUBLIC ${WING_LINKS} PRIVATE ${WING_PRIVATE_LINKS})
  vellum_compile_options(${target})
  target_precompile_headers(${target} PRIVATE ${VELLUM_PRECOMPILED})
endfunction()

# vellum_embed(vellum_generators glyphs data/generators/glyphs.bin): the bytes of a file as
# `extern const std::span<const std::uint8_t> embedded_glyphs` in the namespace vellum.
function(vellum_embed target name file)
  set(path ${CMAKE_SOURCE_DIR}/${file})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
  file(READ ${path} bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  set(source ${CMAKE_CURRENT_BINARY_DIR}/embedded_${name}.cpp)
  file(CONFIGURE OUTPUT ${source} @ONLY CONTENT
"#include <cstdint>
#include <span>
namespace vellum {
static constexpr std::uint8_t bytes[] = {@bytes@};
extern const std::span<const std::uint8_t> embedded_@name@;
const std::span<const std::uint8_t> embedded_@name@ = bytes;
}
")
  target_sources(${target} PRIVATE ${source})
endfunction()
