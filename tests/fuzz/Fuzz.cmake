# Included by the top-level CMakeLists.txt when VELMORANT_FUZZ is on: the
# core built with coverage for libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer, and one fuzz target per reader of client bytes.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  message(FATAL_ERROR "VELMORANT_FUZZ necesita clang: configure con -DCMAKE_CXX_COMPILER=clang++-14")
endif()
set(VELMORANT_SANITIZADORES -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
add_compile_options(${VELMORANT_SANITIZADORES} -fsanitize=fuzzer-no-link)
add_link_options(${VELMORANT_SANITIZADORES})

enable_testing()
add_subdirectory(src)
add_subdirectory(tests/fuzz)
