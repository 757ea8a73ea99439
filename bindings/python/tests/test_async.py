# SPDX-License-Identifier: Apache-2.0
"""Calls that coroutines await."""
import asyncio
import time

import numpy as np
import pytest

import hcyclient


def run(server, body, **settings):
    async def main():
        async with hcyclient.AsyncClient(server, **settings) as client:
            return await body(client)
    return asyncio.run(main())


def test_calls(server):
    async def body(client):
        assert await client.feval('math/plus', 2, 3) == 5
        assert await client.math.plus(2, 3) == 5
        assert await client.function(server + '/echo')('a', 'b', nargout=2) == ('a', 'b')
        assert await client.feval('echo', 1, nargout=0) is None
        assert (await client.echo(1, results='exact')).shape == (1, 1)
        assert (await client.echo(np.ones((200, 300)))).shape == (200, 300)
    run(server, body)


def test_many_at_once(server):
    async def body(client):
        sums = await asyncio.gather(*(client.math.plus(i, i) for i in range(100)))
        assert sums == [2 * i for i in range(100)] and client._pool.connections <= 3
        start = time.monotonic()
        await asyncio.gather(*(client.demo.sleep(0.3, nargout=0) for _ in range(3)))
        assert time.monotonic() - start < 0.8
    run(server, body, connections=3)


def test_the_loop_goes_on_meanwhile(server):
    async def body(client):
        ticks = 0
        call = asyncio.ensure_future(client.demo.sleep(0.5, nargout=0))
        while not call.done():
            await asyncio.sleep(0.01)
            ticks += 1
        assert ticks > 5
    run(server, body)


def test_a_call_is_cancelled_at_once(server):
    async def body(client):
        for _ in range(3):
            start = time.monotonic()
            with pytest.raises(asyncio.TimeoutError):
                await asyncio.wait_for(client.demo.sleep(900), 0.1)
            assert time.monotonic() - start < 0.5
            assert await client.math.plus(2, 3) == 5
        call = asyncio.ensure_future(client.demo.sleep(900))
        waiting = asyncio.ensure_future(client.math.plus(2, 3))
        await asyncio.sleep(0.1)
        waiting.cancel()  # before it has a connection
        call.cancel()
        with pytest.raises(asyncio.CancelledError):
            await waiting
        assert await client.math.plus(2, 3) == 5
    run(server, body, connections=1)


def test_the_connection_of_a_cancelled_call_is_replaced(server):
    async def body(client):
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(client.demo.sleep(0.4), 0.1)
        assert await client.math.plus(2, 3) == 5
        await asyncio.sleep(0.6)
        assert client._pool.connections == len(client._pool._workers) == 1
    run(server, body, connections=1)


def test_errors(server):
    async def body(client):
        with pytest.raises(hcyclient.FunctionError):
            await client.demo.fail('a:b', 'c')
        with pytest.raises(TypeError, match='cannot convert'):
            await client.echo({1})
        with pytest.raises(ValueError):
            await client.echo(nargout=-1)
    run(server, body)


def test_a_client_that_is_closed(server):
    async def body(client):
        call = asyncio.ensure_future(client.demo.sleep(900))
        await asyncio.sleep(0.1)
        await client.close()
        with pytest.raises(RuntimeError, match='closed during the call'):
            await call
        with pytest.raises(RuntimeError, match='is closed'):
            await client.math.plus(2, 3)
    run(server, body)


def test_a_client_serves_several_loops(server):
    client = hcyclient.AsyncClient(server)
    for _ in range(2):
        assert asyncio.run(client.feval('math/plus', 2, 3)) == 5


def test_it_has_no_attributes_that_are_no_functions(server):
    assert not hasattr(hcyclient.AsyncClient(server), '_repr_html_')
    assert not hasattr(hcyclient.AsyncClient(), 'math')


def test_a_batch(server):
    async def body(client):
        seen = []
        results = client.map('math/plus', range(20), range(20), workers=4,
                             progress=lambda done, total: seen.append((done, total)))
        assert [value async for value in results] == [2 * i for i in range(20)]
        assert seen == [(i, 20) for i in range(1, 21)]
        pairs = client.map(client.echo, 'ab', nargout=1, results='exact')
        assert [value async for value in pairs] == ['a', 'b']
        with pytest.raises(TypeError, match='at least one iterable'):
            client.map('echo')
        with pytest.raises(ValueError, match='workers must be '):
            client.map('echo', [1], workers=0)
    run(server, body)


def test_a_batch_reads_no_further_than_it_has_to(server):
    async def body(client):
        read = []
        results = client.map('echo', (read.append(i) or i for i in range(100)), workers=3)
        assert len(read) == 3
        assert await results.__anext__() == 0 and len(read) == 4
        await results.aclose()
        assert len(read) == 4
    run(server, body)


def test_a_batch_ends_with_the_first_failure(server):
    async def body(client):
        done = []
        with pytest.raises(TypeError, match='cannot convert'):
            async for value in client.map('echo', [1, 2, {3}, *range(100)], workers=2):
                done.append(value)
        assert done == [1, 2]
        assert await client.math.plus(2, 3) == 5
    run(server, body)


def test_a_batch_that_is_cancelled(server):
    async def body(client):
        async def read():
            return [value async for value in client.map('demo/sleep', [0, *[900] * 50], workers=3)]
        start = time.monotonic()
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(read(), 0.3)
        assert time.monotonic() - start < 2 and not client._pool.connections
        assert await client.math.plus(2, 3) == 5
    run(server, body, connections=3)
