#!/usr/bin/env python3
"""A POP3 server over TLS on loopback for the Windows program test: greets,
answers RETR 1 with a signed mail, QUIT with goodbye, anything else with +OK.
Prints its port, serves connections one after another, and ends by itself
after a few minutes.
    tls_pop3_server.py CERT KEY"""
import socket
import ssl
import sys
import time

MAIL = (
    b"+OK 1 message\r\n"
    b"From: sender@example.org\r\n"
    b"Subject: signed\r\n"
    b"MIME-Version: 1.0\r\n"
    b'Content-Type: multipart/signed; protocol="application/pgp-signature";\r\n'
    b'\tboundary="sig"\r\n'
    b"\r\n"
    b"--sig\r\n"
    b"Content-Type: text/plain\r\n"
    b"\r\n"
    b"body\r\n"
    b"--sig\r\n"
    b"Content-Type: application/pgp-signature\r\n"
    b"\r\n"
    b"signature\r\n"
    b"--sig--\r\n"
    b".\r\n"
)

context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(sys.argv[1], sys.argv[2])
listener = socket.create_server(("127.0.0.1", 0))
print(listener.getsockname()[1], flush=True)
deadline = time.monotonic() + 300
while time.monotonic() < deadline:
    listener.settimeout(deadline - time.monotonic())
    try:
        raw, _ = listener.accept()
    except (socket.timeout, OSError):
        break
    try:
        raw.settimeout(30)
        conn = context.wrap_socket(raw, server_side=True)
        conn.sendall(b"+OK ready\r\n")
        pending = b""
        while True:
            data = conn.recv(4096)
            if not data:
                break
            pending += data
            while b"\r\n" in pending:
                line, pending = pending.split(b"\r\n", 1)
                command = line.split(b" ")[0].upper()
                if command == b"RETR":
                    conn.sendall(MAIL)
                elif command == b"QUIT":
                    conn.sendall(b"+OK bye\r\n")
                    conn.close()
                    raise EOFError
                else:
                    conn.sendall(b"+OK\r\n")
    except (EOFError, OSError, ssl.SSLError):
        pass
    finally:
        raw.close()
