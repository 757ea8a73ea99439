# SPDX-License-Identifier: Apache-2.0
cc -std=c99 -Iinclude examples/first.c -o first \
  -Lbuild/release/src -lhcyclient -Wl,-rpath,"$PWD/build/release/src"
c++ -std=c++17 -Iinclude examples/first.cc -o first_cpp \
  -Lbuild/release/src -lhcyclient -Wl,-rpath,"$PWD/build/release/src"

build/release/server/hcy-local-server --port 0 > listening &
server=$!
until grep -qs http listening; do sleep 0.1; done
url=$(cut -d ' ' -f 3 listening)

./first "$url/math/plus"
./first_cpp "$url/math/plus"
./first_cpp "$url/math/minus" || true # a function that does not exist

cc -std=c99 -Iinclude examples/solve.c -o solve \
  -Lbuild/release/src -lhcyclient -Wl,-rpath,"$PWD/build/release/src"
c++ -std=c++17 -Iinclude examples/solve.cc -o solve_cpp \
  -Lbuild/release/src -lhcyclient -Wl,-rpath,"$PWD/build/release/src"

./solve "$url/linalg/solve"
./solve_cpp "$url/linalg/solve"
./solve "$url/linalg/resolve" || true # a function that does not exist

kill "$server"
wait "$server"
