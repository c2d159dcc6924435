# Warnings, language level and sanitizers, gathered in one interface target that every target of the project links.
add_library(zorvane_compile_options INTERFACE)
target_compile_features(zorvane_compile_options INTERFACE cxx_std_20)
target_compile_options(zorvane_compile_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  -Wno-missing-field-initializers)  # designated initialisers leave members out on purpose
option(ZORVANE_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)
if(ZORVANE_WARNINGS_AS_ERRORS)
  target_compile_options(zorvane_compile_options INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(zorvane_compile_options INTERFACE -Wthread-safety)
endif()
if(ZORVANE_SANITIZE)
  target_compile_options(zorvane_compile_options INTERFACE
    -fsanitize=${ZORVANE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Instrumented code hides from GCC what is initialised. Asio has fences, which the thread sanitizer cannot see; the
    # locks around its queues order the same accesses.
    target_compile_options(zorvane_compile_options INTERFACE -Wno-maybe-uninitialized -Wno-tsan)
  endif()
  target_link_options(zorvane_compile_options INTERFACE -fsanitize=${ZORVANE_SANITIZE})
endif()

# lld links a test program in a fraction of the time. What is built does not differ in anything a user sees.
include(CheckLinkerFlag)
check_linker_flag(CXX -fuse-ld=lld ZORVANE_HAVE_LLD)
if(ZORVANE_HAVE_LLD)
  target_link_options(zorvane_compile_options INTERFACE -fuse-ld=lld)
endif()
