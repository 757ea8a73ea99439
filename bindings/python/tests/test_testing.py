# SPDX-License-Identifier: Apache-2.0
"""hcyclient.testing: functions of Python behind a real server, and the fixtures of pytest."""
import os
import pathlib
import subprocess
import sys
import threading
import time

import numpy as np
import pytest

import hcyclient
import hcyclient.testing
from hcyclient.testing import Server

ROOT = pathlib.Path(__file__).resolve().parents[1]


def test_a_function_gets_and_returns_what_feval_would(client):
    with Server({'my/scale': lambda a, k: a * k}) as server:
        np.testing.assert_array_equal(
            client.feval(server.url('my/scale'), np.array([[1.0, 2.0], [3.0, 4.0]]), 3.0),
            [[3.0, 6.0], [9.0, 12.0]])
        [call] = server.calls
        assert (call.function, call.nargout, len(call.arguments)) == ('my/scale', 1, 2)


VALUES = [
    1.5, True, 'text', '', None, 3 + 4j, np.int8(-5), np.array([[1, 2], [3, 4]], np.uint64),
    np.zeros((2, 0, 3), np.float32), np.array([[True, False], [False, True]]), hcyclient.Cell([1.0, 'a', None]),
    {'name': 'x', 'values': [1.0, 2.0]}, [{'a': 1.0}, {'a': 2.0}], [], 'ü𝄞\ud800',
]


@pytest.mark.parametrize('value', VALUES, ids=repr)
def test_every_value_arrives_as_from_the_echo(client, echo, value):
    with Server({'same': lambda x: x}) as server:
        returned = client.feval(server.url('same'), value)
    expected = echo(value)
    assert type(returned) is type(expected)
    np.testing.assert_equal(returned, expected)


def test_several_outputs_are_a_tuple(client):
    with Server({'divide': lambda a, b: (a // b, a % b), 'none': lambda: None}) as server:
        quotient, rest = client.feval(server.url('divide'), 17.0, 5.0, nargout=2)
        assert (quotient, rest) == (3, 2)
        assert client.feval(server.url('divide'), 17.0, 5.0) == 3
        assert client.feval(server.url('none'), nargout=0) is None
        with pytest.raises(hcyclient.FunctionError, match='returned 2 outputs, but 3'):
            client.feval(server.url('divide'), 17.0, 5.0, nargout=3)


def test_an_exception_is_an_error_of_the_function(client):
    def inner():
        raise KeyError('price')

    def fails():
        inner()

    def raises():
        raise hcyclient.FunctionError('No.', 'my:error',
                                      (hcyclient.StackFrame('f.x', 'f', 7),))

    functions = {'fails': fails, 'raises': raises, 'object': object, 'ok': lambda: 1.0,
                 'exits': lambda: sys.exit(3), 'judges': lambda: pytest.fail('wrong arguments')}
    with Server(functions) as server:
        with pytest.raises(hcyclient.FunctionError, match='3') as caught:
            client.feval(server.url('exits'))
        assert caught.value.identifier == 'python:SystemExit'
        with pytest.raises(hcyclient.FunctionError, match='wrong arguments'):
            client.feval(server.url('judges'))
        with pytest.raises(hcyclient.FunctionError) as caught:
            client.feval(server.url('fails'))
        assert caught.value.identifier == 'python:KeyError'
        assert caught.value.message == "'price'"
        assert [frame.name for frame in caught.value.stack] == ['inner', 'fails']
        assert caught.value.stack[0].file == __file__
        with pytest.raises(hcyclient.FunctionError) as caught:
            client.feval(server.url('raises'))
        assert (caught.value.message, caught.value.identifier) == ('No.', 'my:error')
        assert tuple(caught.value.stack) == (hcyclient.StackFrame('f.x', 'f', 7),)
        with pytest.raises(hcyclient.FunctionError) as caught:
            client.feval(server.url('object'))
        assert caught.value.identifier == 'python:TypeError'
        assert client.feval(server.url('ok')) == 1


def test_an_output_that_cannot_be_converted_is_named(client):
    functions = {'my/scale': lambda: {1}, 'two': lambda: (1.0, {'a': [b'x']})}
    with Server(functions) as server:
        with pytest.raises(hcyclient.FunctionError) as caught:
            client.feval(server.url('my/scale'))
        assert caught.value.message == ('output 1 of my/scale: cannot convert object of type set; '
                                        'use sorted(x) or list(x)')
        with pytest.raises(hcyclient.FunctionError) as caught:
            client.feval(server.url('two'), nargout=2)
        assert caught.value.message.startswith("output 2 of two: ['a'][0]: cannot convert")


def test_a_call_takes_less_than_a_millisecond(client):
    with Server({'same': lambda x: x}) as server:
        same = client.function(server.url('same'))
        times = []
        for _ in range(300):
            begin = time.perf_counter()
            same(1.0)
            times.append(time.perf_counter() - begin)
    # The machine may have other things to do, but not at all times.
    assert sorted(times)[len(times) // 10] < 0.001


def test_functions_run_side_by_side(client):
    both = threading.Barrier(2, timeout=20)
    with Server({'meet': lambda: float(both.wait() >= 0)}, threads=2) as server:
        def call():
            with hcyclient.Client() as other:
                assert other.feval(server.url('meet')) == 1
        thread = threading.Thread(target=call)
        thread.start()
        assert client.feval(server.url('meet')) == 1
        thread.join()


def test_a_large_array_passes(client):
    array = np.arange(3e6).reshape(1000, 3000)
    with Server({'negative': lambda a: -a}) as server:
        np.testing.assert_array_equal(client.feval(server.url('negative'), array), -array)


def test_faults_and_other_functions(client):
    with Server({'f': lambda: 1.0}, options=['--fault', 'f=503@1']) as server:
        with pytest.raises(hcyclient.HttpError, match='503'):
            client.feval(server.url('f'))
        assert client.feval(server.url('f')) == 1
        assert client.feval(server.url('math/plus'), 1.0, 2.0) == 3


def test_closing_ends_what_waits(client):
    release = threading.Event()
    server = Server({'wait': lambda: release.wait(20)})
    failed = []

    def call():
        with hcyclient.Client() as other, pytest.raises(hcyclient.TransportError):
            other.feval(server.url('wait'))
        failed.append(True)

    thread = threading.Thread(target=call)
    thread.start()
    while not server.calls:
        time.sleep(0.001)
    threading.Timer(0.2, release.set).start()
    server.close()
    server.close()
    thread.join(20)
    assert failed


def test_what_cannot_start():
    with pytest.raises(RuntimeError, match='exit status 64'):
        Server(options=['--no-such-option'])
    with pytest.raises(RuntimeError, match='exit status 64'):
        Server(replay='/no/such/folder')
    with pytest.raises(FileNotFoundError, match='HCY_LOCAL_SERVER'):
        Server(program='no-such-program')
    for wrong in ({'threads': 0}, {'functions': {'a=b': len}}, {'functions': {'/': len}}):
        with pytest.raises(ValueError):
            Server(**wrong)


def test_calls_are_recorded_and_replayed(client, server, tmp_path):
    with Server(record=tmp_path / 'calls', upstream=server) as recorder:
        assert client.feval(recorder.url('math/plus'), 1.0, 2.0) == 3
    with Server(replay=tmp_path / 'calls') as replayer:
        assert client.feval(replayer.url('math/plus'), 1.0, 2.0) == 3
        with pytest.raises(hcyclient.HttpError, match='404'):
            client.feval(replayer.url('math/plus'), 1.0, 3.0)


PLUGIN_TESTS = '''
import pytest

@pytest.fixture
def hcy_functions():
    return {'my/double': lambda x: 2 * x}

def test_own(hcy_server, hcy_client):
    assert hcy_client.feval(hcy_server.url('my/double'), 4.0) == 8

@pytest.mark.hcy_replay('sums')
def test_sums(hcy_server, hcy_client):
    assert hcy_client.feval(hcy_server.url('math/plus'), 1.0, 2.0) == 3

@pytest.mark.hcy_replay()
def test_without_name(hcy_server):
    pass

@pytest.mark.hcy_replay('../elsewhere')
def test_outside(hcy_server):
    pass
'''


def run_pytest(folder, *arguments):
    environment = {**os.environ, 'PYTHONPATH': str(ROOT), 'PYTHONDONTWRITEBYTECODE': '1'}
    done = subprocess.run(
        [sys.executable, '-m', 'pytest', '-p', 'hcyclient.testing_plugin', '-p', 'no:cacheprovider',
         '--strict-markers', '-q', *arguments], cwd=folder, env=environment, capture_output=True,
        text=True, timeout=120, check=False)
    return done.stdout + done.stderr


def test_the_plugin_records_once_and_replays_from_then_on(server, tmp_path):
    (tmp_path / 'test_it.py').write_text(PLUGIN_TESTS)
    printed = run_pytest(tmp_path)
    assert '1 passed, 3 errors' in printed, printed
    assert "not a valid name for a recording: '../elsewhere'" in printed
    assert 'run pytest once with --hcy-upstream URL' in printed
    assert 'hcy_replay takes one argument, the name of a recording' in printed
    assert '2 passed' in run_pytest(tmp_path, '--hcy-upstream', server)
    assert len(list((tmp_path / 'recordings/sums').glob('*.hcycall'))) == 1
    assert '2 passed' in run_pytest(tmp_path)
    # What is recorded is not asked for again.
    assert '2 passed' in run_pytest(tmp_path, '--hcy-upstream', 'http://127.0.0.1:1')
