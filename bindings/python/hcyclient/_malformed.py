# SPDX-License-Identifier: Apache-2.0
"""What is raised where a server broke its own rules."""
from .errors import TransportError


def malformed(what: str) -> TransportError:
    return TransportError(f'the reply holds {what}')
