# Warnings as errors for the project's own targets, and the sanitizer switch.
add_library(kalmor_warnings INTERFACE)
target_compile_options(kalmor_warnings INTERFACE -Wall -Wextra -Wpedantic -Werror)
# GCC 12 at -O3 reports overlapping copies inside std::string that cannot happen (its own
# libstdc++ inlining), which would fail every optimised build.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(kalmor_warnings INTERFACE -Wno-restrict)
endif()

if(KALMOR_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined -fno-sanitize-recover=all)
endif()
