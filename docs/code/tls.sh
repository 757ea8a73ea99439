# SPDX-License-Identifier: Apache-2.0
exec 3>&1 >openssl.log 2>&1
# An authority; clients need its certificate, ca.pem.
openssl req -x509 -days 365 -subj '/CN=Our authority' -nodes \
  -addext basicConstraints=critical,CA:TRUE -addext keyUsage=critical,keyCertSign,cRLSign \
  -newkey ec -pkeyopt ec_paramgen_curve:P-256 -keyout ca.key -out ca.pem

# A certificate for the server, with every host name that clients use in URLs.
openssl req -new -subj '/CN=server' -nodes \
  -addext subjectAltName=IP:127.0.0.1,DNS:localhost \
  -newkey ec -pkeyopt ec_paramgen_curve:P-256 -keyout server.key -out server.csr
openssl x509 -req -days 365 -copy_extensions copy -in server.csr \
  -CA ca.pem -CAkey ca.key -CAcreateserial -out server.pem

# A certificate for a client, and an encrypted copy of its key.
openssl req -new -subj '/CN=client' -nodes \
  -newkey ec -pkeyopt ec_paramgen_curve:P-256 -keyout client.key -out client.csr
openssl x509 -req -days 365 -in client.csr -CA ca.pem -CAkey ca.key -out client.pem
openssl pkcs8 -topk8 -v2 aes-256-cbc -passout 'pass:four words' -in client.key -out locked.key

# A list of revoked certificates: first an empty one, then one with the server's.
printf '[ca]\ndefault_ca=ours\n[ours]\ndatabase=revoked.txt\n' > ca.cnf
: > revoked.txt
openssl ca -config ca.cnf -cert ca.pem -keyfile ca.key -md sha256 -crldays 7 -gencrl -out none.crl
openssl ca -config ca.cnf -cert ca.pem -keyfile ca.key -md sha256 -revoke server.pem
openssl ca -config ca.cnf -cert ca.pem -keyfile ca.key -md sha256 -crldays 7 -gencrl -out server.crl
exec >&3 2>&1

build/release/server/hcy-local-server --port 0 \
  --cert server.pem --key server.key --client-ca ca.pem > listening &
server=$!
until grep -qs http listening; do sleep 0.1; done
url=$(cut -d ' ' -f 3 listening)

cc -std=c99 -Iinclude docs/code/tls_recipes.c -o tls \
  -Lbuild/release/src -lhcyclient -Wl,-rpath,"$PWD/build/release/src"
./tls "$url"

openssl s_client -connect "${url#https://}" -CAfile ca.pem < /dev/null 2> /dev/null |
  grep 'Verify return code' | head -n 1

kill "$server"
wait "$server"
