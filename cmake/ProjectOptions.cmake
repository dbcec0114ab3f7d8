# Language level and warnings, the same for every target of the project.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # This compiler warns of overlapping copies inside its own std::string when it optimises "text" + string.
    add_compile_options($<$<CONFIG:Release>:-Wno-restrict>)
endif()
# What users get checks its buffers and its stack.
add_compile_options($<$<CONFIG:Release>:-fstack-protector-strong>)
add_compile_definitions($<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
if(NOT APPLE)
    # 64-bit file offsets and the interfaces that the host declares only on request.
    add_compile_definitions(_GNU_SOURCE _FILE_OFFSET_BITS=64)
endif()
include_directories(${PROJECT_SOURCE_DIR})

# What tests are started with: this build's tools, a user who agrees to changes of an own volume, and neither a bus nor a
# start-up volume unless they make one themselves, least of all the machine's own.
set(ZEK_TEST_ENVIRONMENT HOST_TOOLS_FOLDER=${CMAKE_BINARY_DIR}/mac-tools ZEK_STARTUP_VOLUME=${CMAKE_BINARY_DIR}/no-volume
    DBUS_SESSION_BUS_ADDRESS=none: DBUS_SYSTEM_BUS_ADDRESS=none: SECURITY_AGENT_ANSWER=allow)

# zek_test(name SOURCES... LIBRARIES... [HEADERS <header>...] [LABEL label] [LOCK resource]): one GoogleTest program, each of its tests known
# to ctest by name, with this machine's disks out of its reach. HEADERS are large ones that many of its sources have in common:
# they are compiled once, which takes as long as four or five sources that include them. Tests with the same LOCK do not run at
# the same time.
function(zek_test name)
    cmake_parse_arguments(ARG "" "LABEL;LOCK" "SOURCES;LIBRARIES;HEADERS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
    target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} disk_guard GTest::gmock GTest::gtest GTest::gtest_main)
    set(properties)
    if(ARG_LABEL)
        list(APPEND properties LABELS ${ARG_LABEL})
    endif()
    if(ARG_LOCK)
        list(APPEND properties RESOURCE_LOCK ${ARG_LOCK})
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120 ${properties}
        ENVIRONMENT "${ZEK_TEST_ENVIRONMENT}")
endfunction()
