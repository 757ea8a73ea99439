# SPDX-License-Identifier: Apache-2.0
"""Clients and calls."""
import ctypes
import gc
import os
import pickle
import subprocess
import sys
import threading
import time
import weakref

import numpy as np
import pytest
import replies

import hcyclient
from hcyclient import Error, FunctionError, HttpError, StackFrame, TransportError


def test_the_number_of_outputs_decides_what_is_returned(server, client):
    assert client.feval(server + '/echo', 'a', 'b', nargout=2) == ('a', 'b')
    assert client.feval(server + '/echo', 'a', nargout=0) is None
    assert client.feval(server + '/echo', 'a') == 'a'
    u, s, v = client.feval(server + '/linalg/svd', np.arange(6.0).reshape(3, 2), nargout=3)
    np.testing.assert_allclose(u @ s @ v.T, np.arange(6.0).reshape(3, 2), atol=1e-12)


def test_it_solves(server):
    with hcyclient.Client(timeout=30) as client:
        a, b = np.array([[2.0, 1], [1, 3]]), np.array([3.0, 5])
        x = client.feval(server + '/linalg/solve', a, b)
    np.testing.assert_allclose(a @ x, b)


def test_a_function_is_called_like_one_of_python(server, client):
    plus = client.function(server + '/math/plus')
    assert plus(2, 3).item() == 5
    assert client.function(server + '/echo')(2, 'b', nargout=2)[1] == 'b'
    assert repr(plus) == f'<function {server}/math/plus>'
    assert [array.item() for array in map(plus, [1, 2], [10, 20])] == [11, 22]


@pytest.mark.parametrize('nargout, kind', [(-1, ValueError), (2**31, ValueError), ('2', TypeError),
                                           (1.5, TypeError), (1.0, TypeError),
                                           (None, TypeError)])
def test_a_bad_number_of_outputs(server, client, nargout, kind):
    with pytest.raises(kind, match='nargout must be '):
        client.feval(server + '/echo', 1, nargout=nargout)


def test_a_bad_url(client):
    with pytest.raises(TypeError, match='the URL must be a str, not bytes'):
        client.feval(b'http://127.0.0.1')
    with pytest.raises(ValueError, match='the URL contains a NUL character'):
        client.function('http://127.0.0.1\0')


@pytest.mark.parametrize('url', [
    'file:///etc/hostname', 'FILE:///etc/hostname', 'ftp://127.0.0.1/f', 'telnet://127.0.0.1',
    'dict://127.0.0.1/f', 'localhost:8080/echo', '//127.0.0.1/echo', 'http:/h/f', 'http:h/f',
    'shttp://h/f', ' http://h/f', 'http\u017f://h/f'])
def test_a_url_of_another_scheme(url):
    for client in hcyclient.Client(), hcyclient.Client('http://127.0.0.1:1'):
        for call in (client.feval, client.function):
            with pytest.raises(ValueError) as raised:
                call(url)
            assert str(raised.value) == (
                'the URL must begin with http:// or https://')


def test_the_scheme_in_capitals(server, client):
    assert server.startswith('http://')
    assert client.feval('HTTP' + server[4:] + '/echo', 'x') == 'x'
    with pytest.raises(TransportError, match='connect'):
        client.feval('hTTPs://127.0.0.1:1/echo')


def test_an_http_error(server, client):
    with pytest.raises(HttpError) as raised:
        client.feval(server + '/no/such/function')
    assert (raised.value.status, raised.value.reason) == (404, 'Not Found')
    assert raised.value.url == server + '/no/such/function'
    assert str(raised.value) == f'{server}/no/such/function: HTTP status 404 Not Found'
    assert str(HttpError(404, '')) == 'HTTP status 404'


def test_a_reason_in_any_bytes(client):
    with replies.answering(b'', 503, 'K\xe4se') as url, pytest.raises(HttpError) as raised:
        client.feval(url)
    assert (raised.value.status, raised.value.reason) == (503, 'K\\xe4se')


def test_an_error_of_the_function(server, client):
    with pytest.raises(FunctionError) as raised:
        client.feval(server + '/demo/fail', 'example:id', 'what went wrong', 2)
    error = raised.value
    assert (error.message, error.identifier) == ('what went wrong', 'example:id')
    assert error.stack == (StackFrame('demo/fail_1', 'fail_1', 1),
                           StackFrame('demo/fail_2', 'fail_2', 2))
    assert str(error) == 'example:id: what went wrong'


def test_a_transport_error(client):
    with pytest.raises(TransportError) as raised:
        client.feval('http://127.0.0.1:1/any')
    library = ctypes.CDLL('libcurl.so.4')
    library.curl_easy_strerror.restype = ctypes.c_char_p
    could_not_connect = library.curl_easy_strerror(7).decode()
    assert raised.value.text == could_not_connect
    assert str(raised.value) == 'http://127.0.0.1:1/any: ' + could_not_connect


def test_another_number_of_outputs_is_a_transport_error(client):
    reply = replies.result(*[replies.double_array([1, 1], 1)] * 3)
    with replies.answering(reply) as url:
        for nargout in (0, 1, 2, 4):
            with pytest.raises(TransportError, match='Number of outputs received from VORTEN, 3'):
                client.feval(url, nargout=nargout)
        assert len(client.feval(url, nargout=3)) == 3


def test_a_client_goes_on_after_failures(server, client):
    for _ in range(3):
        with pytest.raises(Error):
            client.feval(server + '/demo/fail', 'a:b', 'c')
        assert client.feval(server + '/echo', 'x') == 'x'


@pytest.mark.parametrize('error', [
    HttpError(404, 'Not Found'), FunctionError('message', 'a:b', (StackFrame('f', 'n', 3),)),
    TransportError('text'), hcyclient.IncompleteReply('text')])
def test_errors_can_be_sent_to_another_process(error):
    again = pickle.loads(pickle.dumps(error))
    assert type(again) is type(error) and isinstance(again, Error) and vars(again) == vars(error)


def await_true(condition):
    deadline = time.monotonic() + 30
    while not condition():
        assert time.monotonic() < deadline
        time.sleep(0.005)


def test_a_closed_client_says_so(server):
    client = hcyclient.Client()
    function = client.function(server + '/echo')
    with client:
        function(1)
    client.close()  # again, which does nothing
    for call in (function, lambda *_: client.feval(server + '/echo')):
        with pytest.raises(RuntimeError, match='this client is closed'):
            call(1)


def test_a_closed_client_has_no_connection(server, client):
    client.feval(server + '/echo', 1)  # a thread keeps what it waits with
    gc.collect()  # closes what other tests have left
    with hcyclient.Client() as client:
        before = len(os.listdir('/proc/self/fd'))
        client.feval(server + '/echo', 1)
        assert len(os.listdir('/proc/self/fd')) > before
    assert len(os.listdir('/proc/self/fd')) <= before


def test_a_client_that_nobody_holds_is_closed(server):
    client = hcyclient.Client()
    client.feval(server + '/echo', 1)
    gone = weakref.ref(client)
    open_files = len(os.listdir('/proc/self/fd'))
    del client
    gc.collect()
    assert gone() is None
    await_true(lambda: len(os.listdir('/proc/self/fd')) < open_files)


def test_the_library_is_started_for_the_first_client_and_ended_with_the_last(server):
    subprocess.run([sys.executable, '-c', '''
import sys, hcyclient
from hcyclient import _library, _runtime
ended = []
terminate = _library.terminate
_library.terminate = lambda: (ended.append(1), terminate())
first, second = hcyclient.Client(), hcyclient.Client()
first.close()
first.close()
assert not ended
assert second.feval(sys.argv[1] + '/echo', 'x') == 'x'
second.close()
assert ended == [1] and _runtime._runtime is None
with hcyclient.Client() as third:
    assert third.feval(sys.argv[1] + '/echo', 'x') == 'x'
assert ended == [1, 1]
''', server], check=True)


def test_a_library_that_other_code_started_for_1_0_is_refused():
    subprocess.run([sys.executable, '-c', '''
import hcyclient
from hcyclient import _library, _runtime
_library.initialize(0x10000)
try:
    hcyclient.Client()
except hcyclient.Error as error:
    assert 'version 1.0' in str(error) and _runtime._users == 0, error
    raise SystemExit(0)
raise SystemExit('no error')
'''], check=True)


def test_a_library_that_does_not_start_says_why():
    outcome = subprocess.run([sys.executable, '-c', '''
import hcyclient
from hcyclient import _library
_library.VERSION_1_1 = 0x7F0000
try:
    hcyclient.Client()
except hcyclient.Error as error:
    print(error)
'''], stdout=subprocess.PIPE, text=True, check=True)
    assert 'version' in outcome.stdout


def test_a_library_that_is_not_there_is_an_import_error(tmp_path):
    outcome = subprocess.run(
        [sys.executable, '-c', 'import hcyclient'], stderr=subprocess.PIPE, text=True,
        env={**os.environ, 'HCYCLIENT_LIBRARY': str(tmp_path / 'x')})
    assert outcome.returncode == 1
    assert 'ImportError: cannot load the shared library of hcyclient' in outcome.stderr
    assert 'HCYCLIENT_LIBRARY' in outcome.stderr


def test_a_missing_libcurl_is_an_import_error():
    outcome = subprocess.run([sys.executable, '-c', '''
import ctypes
def load(name):
    raise OSError('libcurl.so.4: cannot open shared object file: No such file or directory')
ctypes.PyDLL = load
import hcyclient
'''], stderr=subprocess.PIPE, text=True)
    assert 'file or directory; install the system package of libcurl (on Debian: apt install ' \
        'libcurl4)' in outcome.stderr


def test_another_library_is_an_import_error():
    import ctypes.util
    outcome = subprocess.run(
        [sys.executable, '-c', 'import hcyclient'], stderr=subprocess.PIPE, text=True,
        env={**os.environ, 'HCYCLIENT_LIBRARY': ctypes.util.find_library('c')})
    assert 'ImportError: the shared library is not that of hcyclient, or is too old' in outcome.stderr


def test_the_loader_of_the_system_finds_the_library_too(server):
    environment = dict(os.environ)
    library = environment.pop('HCYCLIENT_LIBRARY')
    environment['LD_LIBRARY_PATH'] = os.path.dirname(library)
    subprocess.run([sys.executable, '-c', '''
import sys, hcyclient
with hcyclient.Client() as client:
    client.feval(sys.argv[1] + '/echo', 1)
''', server], env=environment, check=True)


def test_a_client_each_for_many_threads(server):
    failures = []

    def work(number):
        with hcyclient.Client() as client:
            for i in range(50):
                back = client.feval(server + '/echo', np.full((3, 3), number), [i, str(i)],
                                    nargout=2)
                if back[0][2, 2] != number or back[1][1] != str(i):
                    failures.append((number, i))

    threads = [threading.Thread(target=work, args=(number,)) for number in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not failures


def test_other_threads_run_during_a_call(server):
    """Or else this one would not be answered, by a thread of this process."""
    with hcyclient.Client(timeout=60) as client:
        with replies.answering(replies.result(replies.double_array([1, 1], 5))) as url:
            assert client.feval(url).item() == 5


def in_child(function):
    """The exit status of a child process that does only this."""
    child = os.fork()
    if child == 0:
        status = 1
        try:
            status = function() or 0
        finally:
            os._exit(status)
    return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])


def test_a_client_opens_anew_after_a_fork(server, client):
    from hcyclient import _bell
    assert client.feval(server + '/echo', 'before') == 'before'
    parent_files = len(os.listdir('/proc/self/fd'))

    def use():
        if _bell._spare.bells:
            return 3  # they would wake each other
        if client.feval(server + '/echo', 'x') != 'x' or client._pool.connections != 1:
            return 1
        if len(os.listdir('/proc/self/fd')) <= parent_files:
            return 2  # it took the parent's connection
        client.close()
        return 7

    assert in_child(use) == 7
    assert client.feval(server + '/echo', 'after') == 'after'


def test_a_closed_client_stays_closed_after_a_fork():
    client = hcyclient.Client('http://127.0.0.1:1')
    client.close()

    def use():
        try:
            client.feval('x')
        except RuntimeError as error:
            return 7 if 'this client is closed' in str(error) else 1

    assert in_child(use) == 7


def test_a_fork_during_a_call_of_another_thread(client, server):
    asked, told = threading.Event(), threading.Event()

    def hold():
        asked.set()
        told.wait()

    with replies.answering(replies.result(), meanwhile=hold) as url:
        thread = threading.Thread(target=client.feval, args=(url,), kwargs={'nargout': 0})
        thread.start()
        asked.wait()
        outcome = in_child(lambda: 7 if client.feval(server + '/echo', 'x') == 'x' else 1)
        told.set()
        thread.join()
    assert outcome == 7


def test_an_interpreter_ends_while_a_thread_calls(server):
    """It does not wait for the thread, nor end the library under it."""
    outcome = subprocess.run([sys.executable, '-c', '''
import os, sys, threading, time, hcyclient
from hcyclient import _library
_library.terminate = lambda: os._exit(3)
client = hcyclient.Client()
threading.Thread(target=client.feval, args=(sys.argv[1] + '/demo/sleep', 900), daemon=True).start()
while not client._pool.connections:
    time.sleep(0.01)
time.sleep(0.1)
''', server], timeout=300)
    assert outcome.returncode == 0


def run_in_time(function):
    thread = threading.Thread(target=function, daemon=True)
    thread.start()
    thread.join(60)
    assert not thread.is_alive()


def test_the_collector_may_give_a_client_back_while_one_is_made():
    from hcyclient import _runtime

    def make():
        with _runtime._lock:  # as it is then
            hcyclient.Client().close()

    run_in_time(make)


def test_a_fork_while_another_thread_makes_a_client():
    from hcyclient import _runtime

    def make():
        run_in_time(lambda: hcyclient.Client().close())
        return 7

    with _runtime._lock:
        outcome = []
        thread = threading.Thread(target=lambda: outcome.append(in_child(make)))
        thread.start()
        thread.join()
    assert outcome == [7]


def test_a_client_that_cannot_be_made_leaves_nothing(client, monkeypatch):
    from hcyclient import _runtime
    users = _runtime._users
    runtime = client._pool._runtime
    configs, destroy = [], runtime.destroy_config
    monkeypatch.setattr(runtime, 'destroy_config', lambda config: configs.append(destroy(config)))
    for name, text in [('create_config', 'configuration'), ('create_context', 'connection')]:
        with monkeypatch.context() as patch:
            patch.setattr(runtime, name, lambda *_: 1)
            with pytest.raises(Error, match=f'not enough memory for .*{text}'):
                hcyclient.Client()
    hcyclient.Client().close()
    assert _runtime._users == users and len(configs) == 2  # of the second client and of the third
