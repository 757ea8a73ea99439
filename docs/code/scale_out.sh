# SPDX-License-Identifier: Apache-2.0
c++ -std=c++17 -Iinclude examples/scale-out/client.cc -o client -pthread \
  -Lbuild/release/src -lhcyclient -Wl,-rpath,"$PWD/build/release/src"
examples/scale-out/run build/release/server/hcy-local-server ./client 3 > report || cat report
grep -v ' calls on ' report
grep -o ' 0 failed' report
