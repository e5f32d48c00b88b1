# Compiler and linker settings of our own code, carried by the target luadui_flags.
include(CheckCXXCompilerFlag)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# Sanitizer builds keep assertions and line numbers, and run fast enough for the whole suite.
set(CMAKE_C_FLAGS_SANITIZE "-O1 -g1 -fno-omit-frame-pointer")
set(CMAKE_CXX_FLAGS_SANITIZE "-O1 -g1 -fno-omit-frame-pointer")

# The cache knows a file by its place in the checkout, so that a second checkout finds what the first one compiled.
find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
                                    ${CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${CMAKE_CXX_COMPILER_LAUNCHER})
endif()

add_library(luadui_flags INTERFACE)
target_compile_options(luadui_flags INTERFACE -Wall -Wextra -Wpedantic $<$<BOOL:${LUADUI_WERROR}>:-Werror>)
target_compile_features(luadui_flags INTERFACE cxx_std_20)

# GCC 12 sees overlapping copies in "literal" + std::string that cannot happen.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(luadui_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()

# A unique symbol makes dlclose() keep the module for ever, without a word.
check_cxx_compiler_flag(-fno-gnu-unique LUADUI_HAS_NO_GNU_UNIQUE)
if(LUADUI_HAS_NO_GNU_UNIQUE)
    target_compile_options(luadui_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

if(LUADUI_SANITIZE)
    add_compile_options(-fsanitize=${LUADUI_SANITIZE})
    add_link_options(-fsanitize=${LUADUI_SANITIZE})
    if(NOT LUADUI_SANITIZE MATCHES "thread")
        add_compile_options(-fno-sanitize-recover=all)
    endif()
endif()

find_package(Threads REQUIRED)
target_link_libraries(luadui_flags INTERFACE Threads::Threads)
if(WIN32)
    target_compile_definitions(luadui_flags INTERFACE _WIN32_WINNT=0x0A00)
    target_link_options(luadui_flags INTERFACE -Wl,--dynamicbase,--nxcompat,--high-entropy-va)
else()
    target_link_libraries(luadui_flags INTERFACE ${CMAKE_DL_LIBS})
endif()
