# SPDX-License-Identifier: Apache-2.0
"""Certificates for a server on this machine, and for a client."""
import subprocess


def make_certificates(directory):
    """An authority, a server, and a client whose key has the pass phrase `four words`."""
    key = '-newkey ec -pkeyopt ec_paramgen_curve:P-256'
    subprocess.run(['bash', '-euc', f'''
        openssl req -x509 -days 2 -subj '/CN=Authority' -nodes {key} -keyout ca.key -out ca.pem
        openssl req -new -subj '/CN=server' -nodes -addext subjectAltName=IP:127.0.0.1 {key} \
            -keyout server.key -out server.csr
        openssl req -new -subj '/CN=client' -passout 'pass:four words' {key} \
            -keyout client.key -out client.csr
        for name in server client; do
            openssl x509 -req -days 2 -copy_extensions copy -in $name.csr -out $name.pem \
                -CA ca.pem -CAkey ca.key -CAcreateserial
        done'''], cwd=directory, check=True, capture_output=True)
