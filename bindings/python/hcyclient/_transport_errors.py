# SPDX-License-Identifier: Apache-2.0
"""Which exception to raise for an error message of the library.

Most messages are libcurl's. Those of libcurl 7 and 8 differ, so both are here.
"""
from __future__ import annotations

from .errors import CertificateError, ConnectionError, ReplyTooLarge, TimeoutError, TransportError

_KINDS: dict[str, type[TransportError]] = {
    'Timeout was reached': TimeoutError,
    **dict.fromkeys([
        "Couldn't resolve proxy name", 'Could not resolve proxy name',
        "Couldn't resolve host name", 'Could not resolve hostname',
        "Couldn't connect to server", 'Could not connect to server',
        'Server returned nothing (no headers, no data)',
        'Failed sending data to the peer',
        'Failure when receiving data from the peer',
        'Transferred a partial file',
        'SSL connect error',
        'proxy handshake error',
    ], ConnectionError),
    **dict.fromkeys([
        'SSL peer certificate or SSH remote key was not OK',
        'Problem with the local SSL certificate',
        # Which libcurl 8.23 says of a key that it cannot use.
        'A libcurl function was given a bad argument',
        'Problem with the SSL CA cert (path? access rights?)',
        'Failed to load CRL file (path? access rights?, format?)',
        'Issuer check against peer certificate failed',
        'SSL server certificate status verification FAILED',
        'SSL Client Certificate required',
    ], CertificateError),
}
_LIMIT = 'response size limit'
_ADVICE = 'You can increase response size limit using setResponseSizeLimit method.'
_OUR_ADVICE = 'To raise the limit, pass a larger response_size_limit to the client.'


def transport_error(text: str, url: str) -> TransportError:
    if _LIMIT in text:
        return ReplyTooLarge(text.replace(_ADVICE, _OUR_ADVICE), url)
    return _KINDS.get(text, TransportError)(text, url)
