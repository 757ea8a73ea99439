# SPDX-License-Identifier: Apache-2.0
PATH=$PWD/build/release/server:$PWD/build/release/tools/hcy:$PATH
export no_proxy='*'
cc -std=c99 -Iinclude examples/first.c -o first \
  -Lbuild/release/src -lhcyclient -Wl,-rpath,"$PWD/build/release/src"
c++ -std=c++17 -Iinclude examples/first.cc -o first_cpp \
  -Lbuild/release/src -lhcyclient -Wl,-rpath,"$PWD/build/release/src"

pids=
# start NAME OPTION...: starts a server and writes its URL to the file NAME.
start() {
  name=$1
  shift
  hcy-local-server --port 0 "$@" > "$name.listening" 2> "$name.log" &
  pids="$pids $!"
  until grep -qs http "$name.listening"; do sleep 0.05; done
  cut -d ' ' -f 3 "$name.listening" > "$name"
}

# The server of the tests.
start real
real=$!
lab=$(cat real)

# Record.
start recorder --upstream "$lab" --record calls
./first "$(cat recorder)/math/plus"
./first_cpp "$(cat recorder)/math/plus"
hcy call "$(cat recorder)/text/split" '"one two"' --json
kill $!

# Replay, without the other server.
kill "$real"
start replayer --replay calls
./first "$(cat replayer)/math/plus"
./first_cpp "$(cat replayer)/math/plus"
hcy call "$(cat replayer)/text/split" '"one two"' --json

# A call that was not recorded.
hcy call "$(cat replayer)/text/split" '"one too"' || true
cat replayer.log

# Your own function.
cat > scale.py <<'END'
import json, sys
for line in sys.stdin:
    a, k = json.loads(line)['inputs']
    print(json.dumps({'outputs': [[x * k for x in a]]}), flush=True)
END
start own --function 'my/scale=python3 scale.py'
hcy call "$(cat own)/my/scale" '[1,2,3]' 10 --json

# Failures.
start faulty --fault 'math/*=503@1' --fault 'text/*=delay:50ms' --fault 'echo=error:shop:closed:Come back later'
hcy call "$(cat faulty)/math/plus" 1 2 || true
hcy call "$(cat faulty)/math/plus" 1 2
hcy call "$(cat faulty)/echo" 1 || true

# What was sent.
start watched --log calls.log --log-values
hcy call "$(cat watched)/math/plus" '[1,2,3]' 0.5 > /dev/null
cut -d ' ' -f 2,3,12- calls.log

# shellcheck disable=SC2086
kill $pids 2> kill.log || true
