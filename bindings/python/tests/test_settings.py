# SPDX-License-Identifier: Apache-2.0
"""Each of the nine settings reaches the library and does what it says."""
import pathlib
import subprocess
import time

import numpy as np
import pytest
from conftest import local_server

import hcyclient

PKI = '''
new() { openssl req -nodes -newkey ec -pkeyopt ec_paramgen_curve:P-256 "$@"; }
new -x509 -days 2 -subj '/CN=Local CA' -keyout ca.key -out ca.pem
issue() {
  new -subj "/CN=$1" -addext "subjectAltName=$2" -keyout $1.key -out $1.csr
  openssl x509 -req -days 2 -copy_extensions copy -in $1.csr -CA ca.pem -CAkey ca.key \\
    -CAcreateserial -out $1.pem
}
issue server IP:127.0.0.1
issue elsewhere DNS:elsewhere.invalid
issue client DNS:client
openssl pkey -in client.key -aes256 -passout 'pass:four words' -out locked.key
printf '[ca]\\ndefault_ca = local\\n[local]\\ndatabase = revoked.txt\\n' > ca.conf
touch revoked.txt
revocation="openssl ca -config ca.conf -keyfile ca.key -cert ca.pem -md sha256"
$revocation -gencrl -crldays 2 -out empty.pem
$revocation -revoke server.pem
$revocation -gencrl -crldays 2 -out revoked.pem
'''


# By version of libcurl.
UNUSABLE_KEY = ('Problem with the local SSL certificate',
                'A libcurl function was given a bad argument')


@pytest.fixture(scope='module')
def pki(tmp_path_factory):
    directory = tmp_path_factory.mktemp('pki')
    subprocess.run(['bash', '-euc', PKI], cwd=directory, check=True, stderr=subprocess.PIPE)
    return directory


@pytest.fixture(scope='module')
def tls_server(pki):
    with local_server('--cert', pki / 'server.pem', '--key', pki / 'server.key', '--client-ca',
                      pki / 'ca.pem') as url:
        yield url


@pytest.fixture
def files(pki):
    return {'ca_file': pki / 'ca.pem', 'client_cert_file': pki / 'client.pem',
            'client_key_file': pki / 'client.key'}


def call(url, **settings):
    with hcyclient.Client(**settings) as client:
        return client.feval(url + '/echo', 'x')


def refusal(url, **settings):
    with pytest.raises(hcyclient.CertificateError) as raised:
        call(url, **settings)
    return raised.value.text


def test_timeout(server):
    start = time.monotonic()
    with hcyclient.Client(timeout=1) as client:
        with pytest.raises(TimeoutError, match='Timeout was reached') as raised:
            client.feval(server + '/demo/sleep', 30)
    assert type(raised.value) is hcyclient.TimeoutError
    assert 0.9 < time.monotonic() - start < 29
    assert call(server, timeout=None) == 'x'


@pytest.mark.parametrize('settings, expected', [
    ({}, 120), ({'timeout': 2147483}, 2147483), ({'timeout': None}, 0), ({'timeout': 0.1}, 1),
    ({'timeout': 2.5}, 3), ({'timeout': np.float32(2)}, 2)])
def test_timeout_as_the_library_takes_it(settings, expected, monkeypatch):
    with hcyclient.Client() as client:
        runtime, seen = client._pool._runtime, []
        monkeypatch.setattr(runtime, 'set_timeout', lambda _, seconds: seen.append(seconds))
        hcyclient.Client(**settings).close()
        assert seen == [expected]


def test_response_size_limit(server):
    with hcyclient.Client(response_size_limit=1000) as client:
        assert client.feval(server + '/echo', np.ones(100)).size == 100
        with pytest.raises(hcyclient.ReplyTooLarge) as raised:
            client.feval(server + '/echo', np.ones(200))
    assert 'larger than the response size limit' in raised.value.text
    assert raised.value.text.endswith(
        'To raise the limit, pass a larger response_size_limit to the client.')


def test_certificates(tls_server, files):
    assert call(tls_server, **files) == 'x'
    assert call(tls_server, **{name: str(path) for name, path in files.items()}) == 'x'


def test_an_authority_that_is_missing(tls_server, files):
    del files['ca_file']
    refusal(tls_server, **files)


def test_a_certificate_of_the_client_that_is_missing(tls_server, files):
    del files['client_cert_file']
    with pytest.raises(hcyclient.TransportError):
        call(tls_server, **files)


@pytest.mark.parametrize('name', ['client_cert_file', 'client_key_file', 'ca_file',
                                  'revocation_list_file'])
def test_a_file_that_is_missing(name, tmp_path):
    for kind, path in (FileNotFoundError, tmp_path / 'none.pem'), (IsADirectoryError, tmp_path):
        with pytest.raises(kind, match=name) as raised:
            hcyclient.Client(**{name: path})
        assert raised.value.filename == str(path)


def test_a_key_of_another_certificate(tls_server, files, pki):
    files['client_key_file'] = pki / 'server.key'
    assert refusal(tls_server, **files) in UNUSABLE_KEY


@pytest.mark.parametrize('phrase', ['four words', b'four words'])
def test_passphrase(tls_server, files, pki, phrase):
    files['client_key_file'] = pki / 'locked.key'
    assert call(tls_server, client_key_passphrase=phrase, **files) == 'x'
    assert refusal(tls_server, client_key_passphrase='three', **files) in UNUSABLE_KEY


def test_revocation_list_file(tls_server, files, pki):
    assert call(tls_server, revocation_list_file=pki / 'empty.pem', **files) == 'x'
    refusal(tls_server, revocation_list_file=pki / 'revoked.pem', **files)


def test_verify_hostname(files, pki):
    with local_server('--cert', pki / 'elsewhere.pem', '--key', pki / 'elsewhere.key') as url:
        refusal(url, **files)
        assert call(url, verify_hostname=False, **files) == 'x'


def test_verify_peer(tls_server, files):
    del files['ca_file']
    refusal(tls_server, **files)
    assert call(tls_server, verify_peer=False, **files) == 'x'


@pytest.mark.parametrize('settings, kind', [
    ({'timeout': 0}, ValueError), ({'timeout': -1}, ValueError), ({'timeout': 2147484}, ValueError),
    ({'timeout': '1'}, TypeError), ({'timeout': True}, TypeError),
    ({'timeout': []}, TypeError), ({'timeout': float('nan')}, ValueError),
    ({'response_size_limit': -1}, ValueError),
    ({'response_size_limit': 2**32}, ValueError), ({'ca_file': 'a\0b'}, ValueError),
    ({'ca_file': 3}, TypeError), ({'client_key_passphrase': 'a\0b'}, ValueError),
    ({'client_key_passphrase': 5}, TypeError), ({'client_key_passphrase': [65]}, TypeError),
    ({'verify_peer': None}, TypeError), ({'verify_hostname': 0}, TypeError),
    ({'connections': 0}, ValueError), ({'connections': 1001}, ValueError),
    ({'connections': 1.5}, TypeError), ({'tls': True}, TypeError)])
def test_settings_that_make_no_sense(settings, kind):
    with pytest.raises(kind):
        hcyclient.Client(**settings)


def test_paths_may_be_of_any_kind(tls_server, files):
    files['ca_file'] = bytes(files['ca_file'])
    assert isinstance(files['client_cert_file'], pathlib.Path)
    assert call(tls_server, **files) == 'x'
