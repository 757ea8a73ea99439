# SPDX-License-Identifier: Apache-2.0
#
# Installs the build, compiles programs with it, and runs them.

exec 3>&1 > install.log
cmake --install build/release --prefix "$HOME/hcyclient"

mkdir "$HOME/project"
cp examples/project/CMakeLists.txt examples/first.c examples/first.cc "$HOME/project"
cd "$HOME/project"

export PKG_CONFIG_PATH="$HOME/hcyclient/lib/pkgconfig"
libdir=$(pkg-config --variable=libdir hcyclient)
cc -std=c99 first.c -o first \
  $(pkg-config --cflags --libs hcyclient) -Wl,-rpath,"$libdir"
c++ -std=c++17 first.cc -o first_cpp \
  $(pkg-config --cflags --libs hcyclient) -Wl,-rpath,"$libdir"

cmake -S . -B build -D CMAKE_PREFIX_PATH="$HOME/hcyclient"
cmake --build build
exec >&3

"$HOME/hcyclient/bin/hcy-local-server" --port 0 > listening &
server=$!
until grep -qs http listening; do sleep 0.1; done
url=$(cut -d ' ' -f 3 listening)

./first "$url/math/plus"
./first_cpp "$url/math/plus"

build/first "$url/math/plus"
build/first_cpp "$url/math/plus"

"$HOME/hcyclient/bin/hcy" call "$url/math/plus" 2 3

kill "$server"
wait "$server"
