# Compiler options for every target of the project, in one place.
#
# The plug-in is loaded into somebody else's process, so everything is built
# position-independent with hidden symbols; only what is marked for export leaves
# the shared library.

option(VELMIRA_WERROR "Treat compiler warnings as errors" OFF)
set(VELMIRA_SANITIZE "" CACHE STRING
    "Comma-separated sanitizers to build with (address,undefined or thread)")

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
  set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

set(VELMIRA_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align
    -Woverloaded-virtual -Wformat=2 -Wimplicit-fallthrough)
if(VELMIRA_WERROR)
  list(APPEND VELMIRA_WARNINGS -Werror)
endif()

option(VELMIRA_FUZZ "Build the libFuzzer targets of Tests/Fuzz (clang only; scripts/fuzz makes such a build)" OFF)
if(VELMIRA_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "VELMIRA_FUZZ needs clang's libFuzzer: configure with CC=clang CXX=clang++")
  endif()
  # Every object feeds the fuzzer its coverage; only the fuzz targets link libFuzzer's main.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

set(VELMIRA_SANITIZER_FLAGS "")
if(VELMIRA_SANITIZE)
  set(VELMIRA_SANITIZER_FLAGS -fsanitize=${VELMIRA_SANITIZE} -fno-omit-frame-pointer
      -fno-sanitize-recover=all)
  # Sanitizers must see every object, third-party code called back into included.
  add_compile_options(${VELMIRA_SANITIZER_FLAGS})
  add_link_options(${VELMIRA_SANITIZER_FLAGS})
endif()

# Applies the project's warnings to one of its own targets (never to imported ones).
function(velmira_target_options target)
  target_compile_options(${target} PRIVATE ${VELMIRA_WARNINGS})
endfunction()

# A library made of every source file of one folder. Folders are the subsystems,
# so a new class file joins its subsystem without editing a list.
#   velmira_folder_library(NAME target [INCLUDE dir] [LINK lib...])
function(velmira_folder_library)
  cmake_parse_arguments(ARG "" "NAME;INCLUDE" "LINK" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
  if(NOT ARG_INCLUDE)
    set(ARG_INCLUDE "${CMAKE_CURRENT_SOURCE_DIR}")
  endif()
  add_library(${ARG_NAME} STATIC ${sources})
  target_include_directories(${ARG_NAME} PUBLIC "${ARG_INCLUDE}")
  target_link_libraries(${ARG_NAME} PUBLIC ${ARG_LINK})
  velmira_target_options(${ARG_NAME})
endfunction()
