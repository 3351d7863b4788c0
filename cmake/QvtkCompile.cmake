# SPDX-License-Identifier: Apache-2.0
# Language level, warnings, sanitizers, and the three kinds of target of this project.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

add_compile_options(-Wall -Wextra -Werror -Wformat=2 -Wshadow -Wconversion -Wno-missing-field-initializers
                    $<$<COMPILE_LANGUAGE:CXX>:-Wno-sign-conversion>)
add_compile_definitions(_GNU_SOURCE)
if(CMAKE_BUILD_TYPE STREQUAL "MinSizeRel")
  add_compile_options(-ffunction-sections -fdata-sections)
  add_link_options(-Wl,--gc-sections)
  # The little that is used of the C++ library weighs less, on disk and in memory, than loading all of it.
  add_link_options($<$<LINK_LANGUAGE:CXX>:-static-libstdc++> $<$<LINK_LANGUAGE:CXX>:-static-libgcc>)
endif()
if(QVTK_SANITIZE)
  add_compile_options(-fsanitize=${QVTK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QVTK_SANITIZE})
endif()

# qvtk_library(NAME SOURCES... [DEPS...]): a static library of code that runs on the device. Headers are
# named from the source root ("core/log.h").
function(qvtk_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPS")
  add_library(${name} STATIC ${arg_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_compile_options(${name} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti>)
  target_link_libraries(${name} PUBLIC ${arg_DEPS})
endfunction()

# qvtk_test(NAME SOURCES... [DEPS...] [LABELS...]): a GoogleTest program; every case runs on its own in a fresh
# dev/sandbox, so it may use the device's absolute paths and ports and starts from zeroed state.
function(qvtk_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;DEPS;LABELS")
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${arg_DEPS} GTest::gmock GTest::gtest_main)
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 60)
  endif()
  set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR ${PROJECT_SOURCE_DIR}/dev/sandbox)
  gtest_discover_tests(${name} TEST_PREFIX ${name}: DISCOVERY_TIMEOUT 60 DISCOVERY_MODE PRE_TEST
    PROPERTIES TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}")
endfunction()
