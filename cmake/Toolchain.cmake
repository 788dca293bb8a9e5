# The language, the warnings and the sanitizers that every target is built with.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

# "address,undefined" or "thread"; the presets asan and tsan set it.
set(SKYFLARE_SANITIZE "" CACHE STRING "Sanitizers to build with, separated by commas")
option(SKYFLARE_TIDY "Run clang-tidy on every source file as it is compiled" OFF)

add_library(skyflare_build_flags INTERFACE)
target_compile_options(skyflare_build_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Werror
    # gcc 12 warns of an overlap inside std::string's own operator+ (GCC bug 105651).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

if(SKYFLARE_SANITIZE)
    add_compile_options(-fsanitize=${SKYFLARE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${SKYFLARE_SANITIZE})
    # With sanitizers gcc 12 sees something uninitialised inside std::regex (GCC bug 105562).
    target_compile_options(skyflare_build_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

if(SKYFLARE_TIDY)
    find_program(CLANG_TIDY clang-tidy REQUIRED)
    set(CMAKE_CXX_CLANG_TIDY ${CLANG_TIDY} --quiet)
endif()
