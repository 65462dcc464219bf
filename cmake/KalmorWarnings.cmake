# Warnings as errors for the project's own targets, and the sanitizer switch.
add_library(kalmor_warnings INTERFACE)
target_compile_options(kalmor_warnings INTERFACE -Wall -Wextra -Wpedantic -Werror)

if(KALMOR_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined -fno-sanitize-recover=all)
endif()
