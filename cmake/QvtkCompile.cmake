# SPDX-License-Identifier: Apache-2.0
# Language level, warnings, sanitizers, and the three kinds of target of this project.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)

if(QVTK_CCACHE)
  find_program(CCACHE ccache)
  if(CCACHE)
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
  endif()
endif()

if(QVTK_WERROR)
  add_compile_options(-Werror)
endif()
add_compile_options(-Wall -Wextra -Wformat=2 -Wshadow -Wconversion -Wno-missing-field-initializers
                    $<$<COMPILE_LANGUAGE:CXX>:-Wno-sign-conversion>)
add_compile_definitions(_GNU_SOURCE)
if(CMAKE_BUILD_TYPE STREQUAL "MinSizeRel")
  # What is built without exceptions is not unwound (and keeps its frame pointers).
  add_compile_options(-ffunction-sections -fdata-sections -fno-asynchronous-unwind-tables -fno-unwind-tables)
  add_link_options(-Wl,--gc-sections -Wl,-z,max-page-size=${QVTK_PAGE_SIZE})
  # What an attacker finds hard to use, at the cost that docs/porting.md tells. Fortifying is the C library's to do;
  # the strong stack protector would take the daemon beyond its budget.
  include(CheckPIESupported)
  check_pie_supported()
  add_compile_options(-fstack-protector -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
                      -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
  add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
  # The little that is used of the C++ library weighs less, on disk and in memory, than loading all of it.
  add_link_options($<$<LINK_LANGUAGE:CXX>:-static-libstdc++> $<$<LINK_LANGUAGE:CXX>:-static-libgcc>)
endif()
# What is shipped is compiled as a whole, a sixth smaller for it; tests link the same rooms one by one.
if(CMAKE_BUILD_TYPE STREQUAL "MinSizeRel" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(whole_program -flto=auto)
  set(whole_program_objects -flto=auto -ffat-lto-objects)
  set(one_by_one -fno-lto) # else the linker's plugin makes a whole of what a test means to wrap
endif()
if(QVTK_SANITIZE)
  # vptr: what is built without RTTI makes objects that this check, where tests use them, takes for strangers
  add_compile_options(-fsanitize=${QVTK_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QVTK_SANITIZE})
endif()

# qvtk_library(NAME SOURCES... [DEPS...] [SDK]): a room, the static library qvtk_NAME of the folder src/NAME, which runs on
# the device. Its headers are named from the source root ("core/log.h") and seen only by who names the library: a room's
# DEPS do not pass on, so an arrow that is not named does not compile. SDK: the room calls the cloud SDK, which the
# program names, so that tests can name another.
function(qvtk_library room)
  cmake_parse_arguments(PARSE_ARGV 1 arg "SDK" "" "SOURCES;DEPS")
  set(name qvtk_${room})
  set(headers ${PROJECT_BINARY_DIR}/rooms/${room})
  file(MAKE_DIRECTORY ${headers})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${headers}/${room} SYMBOLIC)

  add_library(${name} STATIC ${arg_SOURCES})
  target_include_directories(${name} PUBLIC ${headers})
  target_compile_options(${name} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti> ${whole_program_objects})
  set(rooms ${arg_DEPS})
  list(FILTER rooms INCLUDE REGEX "^qvtk_")
  list(FILTER arg_DEPS EXCLUDE REGEX "^qvtk_")
  target_link_libraries(${name} PUBLIC ${arg_DEPS} PRIVATE ${rooms})
  if(arg_SDK)
    target_link_libraries(${name} PUBLIC tebra::contract)
  endif()
  set_property(GLOBAL APPEND PROPERTY QVTK_ROOM_HEADERS ${headers})
  if(QVTK_BUILD_TESTS AND NOT QVTK_SANITIZE)
    qvtk_link_alone(${name} "${arg_SDK}")
  endif()
endfunction()

# Links the whole library with what it names and nothing else, so that a symbol of a room above fails the build.
function(qvtk_link_alone name with_sdk)
  add_library(${name}_alone SHARED ${PROJECT_SOURCE_DIR}/cmake/alone.cpp)
  target_link_options(${name}_alone PRIVATE ${one_by_one} -Wl,--no-undefined -Wl,--no-as-needed)
  target_link_libraries(${name}_alone PRIVATE $<LINK_LIBRARY:WHOLE_ARCHIVE,${name}> qvtk_clock)
  if(with_sdk)
    target_link_libraries(${name}_alone PRIVATE tebra::sdk)
  endif()
endfunction()

# qvtk_ship(PROGRAM): it goes on the device.
function(qvtk_ship program)
  install(TARGETS ${program} RUNTIME COMPONENT agent)
  if(CMAKE_BUILD_TYPE STREQUAL "MinSizeRel")
    target_link_libraries(${program} PRIVATE qvtk_no_exceptions)
    target_compile_options(${program} PRIVATE ${whole_program_objects})
    target_link_options(${program} PRIVATE ${whole_program})
  endif()
endfunction()

# The test programs labelled "threads", and nothing else: what is worth running under the thread sanitizer.
add_custom_target(thread_tests)

# qvtk_test(NAME SOURCES... [DEPS...] [LABELS threads] [TIMEOUT SECONDS]): a GoogleTest program; every case runs on its
# own in a fresh dev/sandbox, so it may use the device's absolute paths and ports and starts from zeroed state.
# Label "threads": several threads of the program under test run at once.
function(qvtk_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;DEPS;LABELS")
  if("threads" IN_LIST arg_LABELS)
    add_dependencies(thread_tests ${name})
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE qvtk_all_headers ${arg_DEPS} GTest::gmock GTest::gtest_main)
  target_link_options(${name} PRIVATE ${one_by_one})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 60)
  endif()
  set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR ${PROJECT_SOURCE_DIR}/dev/sandbox)
  gtest_discover_tests(${name} TEST_PREFIX ${name}: DISCOVERY_TIMEOUT 60 DISCOVERY_MODE PRE_TEST
    PROPERTIES TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}")
endfunction()
