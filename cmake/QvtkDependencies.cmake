# SPDX-License-Identifier: Apache-2.0
# What is installed and called. The bus libraries come from the system or from platform/ubus; either way they are
# the target ubus::ubus.
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(JSONC REQUIRED IMPORTED_TARGET json-c>=0.14) # checks UTF-8 while it parses
find_package(CURL 7.85 REQUIRED) # takes protocols by name

find_path(UBUS_INCLUDE_DIR libubus.h)
find_library(UBUS_LIBRARY ubus)
find_library(UBOX_LIBRARY ubox)
find_library(BLOBMSG_JSON_LIBRARY blobmsg_json)
set(ubus_found FALSE)
if(UBUS_INCLUDE_DIR AND UBUS_LIBRARY AND UBOX_LIBRARY AND BLOBMSG_JSON_LIBRARY)
  set(ubus_found TRUE)
endif()
if(QVTK_UBUS STREQUAL "system" AND NOT ubus_found)
  message(FATAL_ERROR "QVTK_UBUS=system, but libubus.h, libubus, libubox or libblobmsg_json was not found. "
                      "Install them, point CMAKE_PREFIX_PATH at them, or use -DQVTK_UBUS=substitute.")
endif()
if(QVTK_UBUS STREQUAL "system" OR (QVTK_UBUS STREQUAL "auto" AND ubus_found))
  set(QVTK_SYSTEM_UBUS TRUE)
  add_library(ubus_system INTERFACE)
  target_include_directories(ubus_system SYSTEM INTERFACE ${UBUS_INCLUDE_DIR})
  target_link_libraries(ubus_system INTERFACE ${UBUS_LIBRARY} ${BLOBMSG_JSON_LIBRARY} ${UBOX_LIBRARY} PkgConfig::JSONC)
  add_library(ubus::ubus ALIAS ubus_system)
  message(STATUS "Bus libraries: ${UBUS_LIBRARY}")
else()
  set(QVTK_SYSTEM_UBUS FALSE)
  message(STATUS "Bus libraries: the substitute in platform/ubus")
endif()

if(QVTK_BUILD_TESTS OR QVTK_BUILD_BENCH)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()
if(QVTK_BUILD_SIM OR QVTK_BUILD_TESTS OR QVTK_BUILD_BENCH)
  find_package(OpenSSL REQUIRED)
  pkg_check_modules(MOSQUITTO REQUIRED IMPORTED_TARGET libmosquitto)
endif()
