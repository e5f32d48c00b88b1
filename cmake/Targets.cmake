# One helper per kind of target, so that a folder's CMakeLists.txt is only its list of files.

# luadui_base_part(<source>...): these files become part of the shared library tessel_base.
function(luadui_base_part)
    foreach(source IN LISTS ARGN)
        target_sources(tessel_base PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/${source})
    endforeach()
endfunction()

# luadui_layer(<folder> USES <folder>... SOURCES <source>... LIBS <library>...): the static library luadui_<folder>;
# all its objects also go into the module.
function(luadui_layer name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "USES;SOURCES;LIBS")
    list(TRANSFORM arg_USES PREPEND luadui_)
    if(NOT arg_SOURCES)   # a folder that is headers only, so far
        add_library(luadui_${name} INTERFACE)
        target_link_libraries(luadui_${name} INTERFACE ${arg_USES} ${arg_LIBS} tessel_base)
        return()
    endif()
    add_library(luadui_${name} STATIC ${arg_SOURCES})
    target_link_libraries(luadui_${name} PUBLIC ${arg_USES} ${arg_LIBS} tessel_base PRIVATE luadui_flags)
    set_property(GLOBAL APPEND PROPERTY LUADUI_MODULE_OBJECTS $<TARGET_OBJECTS:luadui_${name}>)
endfunction()

# luadui_program(<name> SOURCES ... LIBS ...): a program with our flags.
function(luadui_program name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBS")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBS} luadui_flags)
endfunction()

# luadui_tests(<folder> [ISOLATED] SOURCES ... [THREADED ...] [LIBS ...] [DEPENDS ...] [TIMEOUT seconds])
#
# GoogleTest programs <folder>_tests of SOURCES and <folder>_thread_tests of THREADED, each one entry of CTest. The second
# has the label "threads", which the thread sanitizer runs. ISOLATED: every case is an entry and a process of its own.
# LIBS are linked besides luadui_core; DEPENDS are built before, for tests that load them. Further programs of a folder:
# luadui_test_program, with the same arguments but for THREADED, and with LUA lua51_cxx for the Lua whose errors are
# exceptions.
function(luadui_tests name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "ISOLATED" "TIMEOUT" "SOURCES;THREADED;LIBS;DEPENDS")
    set(common LIBS ${arg_LIBS} DEPENDS ${arg_DEPENDS} TIMEOUT ${arg_TIMEOUT})
    if(arg_ISOLATED)
        list(APPEND common ISOLATED)
    endif()
    if(arg_SOURCES)
        luadui_test_program(${name}_tests SOURCES ${arg_SOURCES} ${common})
    endif()
    if(arg_THREADED)
        luadui_test_program(${name}_thread_tests SOURCES ${arg_THREADED} LABELS threads ${common})
    endif()
endfunction()

function(luadui_test_program program)
    cmake_parse_arguments(PARSE_ARGV 1 arg "ISOLATED" "TIMEOUT;LUA" "SOURCES;LIBS;DEPENDS;LABELS")
    luadui_program(${program} SOURCES ${arg_SOURCES} LIBS ${arg_LIBS} luadui_core GTest::gmock GTest::gtest_main)
    set_property(TARGET ${program} PROPERTY LUADUI_LUA ${arg_LUA})
    target_include_directories(${program} PRIVATE ${PROJECT_SOURCE_DIR})
    if(arg_DEPENDS)
        add_dependencies(${program} ${arg_DEPENDS})
    endif()
    if("threads" IN_LIST arg_LABELS)
        add_dependencies(threaded_tests ${program})
    endif()

    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)
    endif()
    set(properties TIMEOUT ${arg_TIMEOUT})
    if(arg_LABELS)
        list(APPEND properties LABELS ${arg_LABELS})
    endif()
    if(arg_ISOLATED)
        include(GoogleTest)
        gtest_discover_tests(${program} TEST_PREFIX ${program}. DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                             WORKING_DIRECTORY ${PROJECT_BINARY_DIR} PROPERTIES ${properties})
    else()
        add_test(NAME ${program} COMMAND ${program} WORKING_DIRECTORY ${PROJECT_BINARY_DIR})
        set_tests_properties(${program} PROPERTIES ${properties})
    endif()
endfunction()

# luadui_bench(<folder> SOURCES ... [LIBS ...]): the program <folder>_bench. See bench/report.h.
function(luadui_bench name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBS")
    if(NOT arg_SOURCES)
        return()
    endif()
    luadui_program(${name}_bench SOURCES ${arg_SOURCES} ${PROJECT_SOURCE_DIR}/bench/report.cpp
                   LIBS ${arg_LIBS} luadui_core benchmark::benchmark)
    target_include_directories(${name}_bench PRIVATE ${PROJECT_SOURCE_DIR})
endfunction()

# luadui_fuzz(<folder> <target>...): one fuzz target per file <target>.cpp that defines LLVMFuzzerTestOneInput. Under
# the preset "fuzz" libFuzzer drives it; elsewhere it is a test that replays corpus/<target>/.
function(luadui_fuzz name)
    foreach(target IN LISTS ARGN)
        set(corpus ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${target})
        if(LUADUI_SANITIZE MATCHES "fuzzer")
            luadui_program(${target} SOURCES ${target}.cpp LIBS luadui_core)
            target_link_options(${target} PRIVATE -fsanitize=fuzzer)
            add_dependencies(fuzzers ${target})
        else()
            luadui_program(${target} SOURCES ${target}.cpp ${PROJECT_SOURCE_DIR}/fuzz/replay.cpp LIBS luadui_core)
            add_test(NAME ${target} COMMAND ${target} ${corpus} WORKING_DIRECTORY ${PROJECT_BINARY_DIR})
        endif()
        target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
    endforeach()
endfunction()
