# SPDX-License-Identifier: Apache-2.0
#
# Installs what was built, compiles programs of one's own against it, and runs them.

cmake --install build/release --prefix "$PWD/hcyclient" > install.log

mkdir project
cp examples/project/CMakeLists.txt examples/first.c examples/first.cc project

export PKG_CONFIG_PATH="$PWD/hcyclient/lib/pkgconfig"
libdir=$(pkg-config --variable=libdir hcyclient)
cc -std=c99 project/first.c -o first \
  $(pkg-config --cflags --libs hcyclient) -Wl,-rpath,"$libdir"
c++ -std=c++17 project/first.cc -o first_cpp \
  $(pkg-config --cflags --libs hcyclient) -Wl,-rpath,"$libdir"

cmake -S project -B project/build -D CMAKE_PREFIX_PATH="$PWD/hcyclient" > cmake.log
cmake --build project/build >> cmake.log

hcyclient/bin/hcy-local-server --port 0 > listening &
server=$!
until grep -qs http listening; do sleep 0.1; done
url=$(cut -d ' ' -f 3 listening)
for program in first first_cpp project/build/first project/build/first_cpp; do
  "./$program" "$url/math/plus"
done

kill "$server"
wait "$server"
