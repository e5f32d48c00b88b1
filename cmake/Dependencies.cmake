# Libraries from the distribution, and, for Windows, the same ones compiled by scripts/windows-deps.sh.
#
#   JsonCpp::JsonCpp   JSON text (base/ only)
#   lua51_headers      what the module is compiled against; its host brings the functions
#   lua51_c            Lua 5.1 compiled as C: errors are longjmp
#   lua51_cxx          Lua 5.1 compiled as C++: errors are exceptions
#   GTest::gtest_main, GTest::gmock
find_package(jsoncpp REQUIRED)
if(NOT TARGET JsonCpp::JsonCpp)
    add_library(JsonCpp::JsonCpp ALIAS jsoncpp_lib)
endif()

find_path(LUA51_INCLUDE lua.hpp PATH_SUFFIXES lua5.1 REQUIRED)
add_library(lua51_headers INTERFACE)
target_include_directories(lua51_headers SYSTEM INTERFACE ${LUA51_INCLUDE})

function(luadui_import_lua target)
    find_library(LUA51_LIBRARY_${target} NAMES ${ARGN} REQUIRED)
    add_library(${target} UNKNOWN IMPORTED GLOBAL)
    set_target_properties(${target} PROPERTIES IMPORTED_LOCATION ${LUA51_LIBRARY_${target}})
    target_link_libraries(${target} INTERFACE lua51_headers)
endfunction()
luadui_import_lua(lua51_c lua5.1 lua51)
luadui_import_lua(lua51_cxx lua5.1-c++ lua51-c++)

if(LUADUI_TESTS)
    find_package(GTest REQUIRED)
endif()
if(LUADUI_BENCH)
    find_package(benchmark REQUIRED)
    find_package(SQLite3 REQUIRED)
endif()

if(WIN32)
    # Programs find their libraries beside themselves.
    foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name} OUTPUT_VARIABLE runtime
                        OUTPUT_STRIP_TRAILING_WHITESPACE)
        file(COPY ${runtime} DESTINATION ${PROJECT_BINARY_DIR} FOLLOW_SYMLINK_CHAIN)
    endforeach()
    get_filename_component(folder ${LUA51_INCLUDE}/../bin ABSOLUTE)
    file(COPY ${folder}/lua51.dll ${folder}/lua51-c++.dll ${folder}/lua.exe DESTINATION ${PROJECT_BINARY_DIR})
endif()
