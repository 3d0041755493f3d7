# Settings that every target of the project shares.
include(CTest)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC ON)
set(CMAKE_AUTORCC ON)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
endif()

option(INKORY_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)
set(INKORY_SANITIZERS "" CACHE STRING "Value for -fsanitize=, empty for none")
option(INKORY_FUZZERS "Build the programs in fuzz/ (needs clang)" OFF)
option(INKORY_COVERAGE "Instrument for coverage" OFF)

add_library(inkory_settings INTERFACE)
target_compile_options(inkory_settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                                                 -Woverloaded-virtual -Wcast-align -Wold-style-cast)
target_compile_definitions(
  inkory_settings INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS
                            QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_include_directories(inkory_settings INTERFACE "${CMAKE_SOURCE_DIR}/source")
if(INKORY_WARNINGS_AS_ERRORS)
  target_compile_options(inkory_settings INTERFACE -Werror)
endif()
if(INKORY_SANITIZERS)
  target_compile_options(inkory_settings INTERFACE "-fsanitize=${INKORY_SANITIZERS}" -fno-omit-frame-pointer
                                                   -fno-sanitize-recover=all)
  target_link_options(inkory_settings INTERFACE "-fsanitize=${INKORY_SANITIZERS}")
endif()
if(INKORY_FUZZERS)
  target_compile_options(inkory_settings INTERFACE -fsanitize=fuzzer-no-link
                                                   "SHELL:-include ${CMAKE_SOURCE_DIR}/fuzz/QpdfForClang.h")
endif()
if(INKORY_COVERAGE)
  target_compile_options(inkory_settings INTERFACE --coverage)
  target_link_options(inkory_settings INTERFACE --coverage)
endif()
