#!/bin/bash
# Compiles Lua 5.1, jsoncpp and GoogleTest for Windows from the distribution's source packages, into build/windows-deps.
# Does nothing when that is done. The lists of source packages are fetched beside the system's own, which stay as they are.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

root=$PWD
prefix=$root/build/windows-deps
work=$prefix/work
stamp=$prefix/done-$(cat scripts/windows-deps.sh cmake/mingw-w64.cmake | sha256sum | cut -c1-16)
[ -e "$stamp" ] && exit

# apt's own entries, with the type deb-src, in a private copy of its settings.
fetch_sources() {
    mkdir -p apt/sources.list.d lists/partial cache/archives/partial
    local entry
    for entry in /etc/apt/sources.list /etc/apt/sources.list.d/*.{list,sources}; do
        [ -e "$entry" ] || continue
        sed -E -e 's/^Types:.*/Types: deb-src/' -e '/^deb-src[[:space:]]/d' -e 's/^deb([[:space:]])/deb-src\1/' \
            "$entry" >"apt/sources.list.d/$(basename "$entry" | sed 's/^sources.list$/main.list/')"
    done
    local options=(-qq -o "Dir::Etc::SourceList=/dev/null" -o "Dir::Etc::SourceParts=$PWD/apt/sources.list.d"
        -o "Dir::State::Lists=$PWD/lists" -o "Dir::Cache=$PWD/cache" -o "APT::Sandbox::User=$(id -un)")
    apt-get "${options[@]}" update
    apt-get "${options[@]}" source lua5.1 libjsoncpp >/dev/null
}

# lua51.dll with import library and lua.exe; and the same library compiled as C++, whose errors are exceptions.
build_lua() {
    local cc=x86_64-w64-mingw32-gcc-posix cxx=x86_64-w64-mingw32-g++-posix core
    cd lua5.1-*/src
    : >lua5.1-deb-multiarch.h
    core=$(ls ./*.c | grep -v -E '/(lua|luac|print)\.c$')
    $cc -O2 -w -DLUA_BUILD_AS_DLL -shared $core -o "$prefix/bin/lua51.dll" -Wl,--out-implib,"$prefix/lib/liblua51.dll.a"
    $cc -O2 -w -DLUA_BUILD_AS_DLL lua.c "$prefix/lib/liblua51.dll.a" -o "$prefix/bin/lua.exe"
    $cxx -O2 -w -x c++ -shared $core -o "$prefix/bin/lua51-c++.dll" -Wl,--out-implib,"$prefix/lib/liblua51-c++.dll.a"
    cp lua.h lualib.h lauxlib.h luaconf.h lua5.1-deb-multiarch.h ../etc/lua.hpp "$prefix/include/"
    cd ../..
}

build_with_cmake() {   # <source folder> <option>...
    local source=$1 name
    name=$(basename "$source")
    shift
    cmake -S "$source" -B "build-$name" -G Ninja --toolchain "$root/cmake/mingw-w64.cmake" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache "$@" >/dev/null
    cmake --build "build-$name" --target install >/dev/null
}

need build windows
echo "Compiling Lua, jsoncpp and GoogleTest for Windows"
rm -rf "$prefix"
mkdir -p "$work" "$prefix"/{bin,lib,include}
cd "$work"
fetch_sources
build_lua
build_with_cmake "$(echo "$work"/libjsoncpp-*)" -DBUILD_SHARED_LIBS=OFF -DBUILD_OBJECT_LIBS=OFF \
    -DJSONCPP_WITH_TESTS=OFF -DJSONCPP_WITH_POST_BUILD_UNITTEST=OFF -DJSONCPP_WITH_PKGCONFIG_SUPPORT=OFF
build_with_cmake /usr/src/googletest -DBUILD_GMOCK=ON
cd "$root"
rm -rf "$work"
touch "$stamp"
