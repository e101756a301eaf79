#!/usr/bin/env python3
"""Real clients against the real servers, through the program's tunnels.

Started by run.sh (as the program's --client, so the tunnels are up). Reads
the ports and folders from the environment that run.sh exports; prints one
line per check and a closing "N passed, N failed" line; exits non-zero when
a check failed.
"""
import email
import os
import poplib
import smtplib
import socket
import subprocess
import sys
import time
import uuid
import warnings

with warnings.catch_warnings():
    warnings.simplefilter("ignore", DeprecationWarning)
    import nntplib

ENV = os.environ
TIMEOUT = 15
USER, PASSWORD = "e2e", "secret"
CLIENT_NEWSREADER = "Microsoft Outlook Express 6.00.2900.5512"
CLIENT_MAILER = "Microsoft Outlook Express 6.00.2900.5512"

results = []


def check(name, ok, detail=""):
    results.append(ok)
    print(("ok   " if ok else "FAIL ") + name + ("" if ok else ": " + detail), flush=True)


def port(name):
    return int(ENV[name])


def wait_listening(p, limit=10.0):
    end = time.monotonic() + limit
    while time.monotonic() < end:
        try:
            socket.create_connection(("127.0.0.1", p), 1).close()
            return
        except OSError:
            time.sleep(0.1)


def headers_of(raw):
    return email.message_from_bytes(raw)


# News: post through the tunnel, read back through the tunnel and directly.

def nntp(p):
    wait_listening(p)
    return nntplib.NNTP("127.0.0.1", p, readermode=True, timeout=TIMEOUT)


def news_article(subject):
    return (
        "From: Tester <tester@e2e.test>\r\n"
        "Newsgroups: local.test\r\n"
        f"Subject: {subject}\r\n"
        "Message-ID: <" + uuid.uuid4().hex + "@e2e.test>\r\n"
        f"X-Newsreader: {CLIENT_NEWSREADER}\r\n"
        "\r\n"
        "A post through the news tunnel.\r\n"
    ).encode()


def find_article(conn, subject):
    _, count, first, last, _ = conn.group("local.test")
    for number in range(int(last), int(first) - 1, -1):
        _, info = conn.article(number)
        raw = b"\r\n".join(info.lines)
        if headers_of(raw)["Subject"] == subject:
            return raw
    return None


def test_news():
    subject = "e2e news " + uuid.uuid4().hex[:8]
    with nntp(port("TUNNEL_NNTP")) as conn:
        reply = conn.post(news_article(subject).split(b"\r\n"))
        check("news: post through the tunnel accepted", reply.startswith("240"), reply)
        through = find_article(conn, subject)
    with nntp(port("INN_PORT")) as conn:
        stored = find_article(conn, subject)
    check("news: article stored on the server", stored is not None, "not found")
    check("news: article read back through the tunnel", through is not None, "not found")
    if stored is None:
        return
    h = headers_of(stored)
    want = ENV["E2E_XNEWSREADER"]
    check("news: X-Newsreader replaced", h["X-Newsreader"] == want, repr(h["X-Newsreader"]))
    check("news: custom header inserted", h["X-E2E-Tunnel"] == "news", repr(h["X-E2E-Tunnel"]))
    if through is not None:
        check("news: tunnel copy has the rewritten headers",
              headers_of(through)["X-Newsreader"] == want, repr(headers_of(through)["X-Newsreader"]))


# Mail download: the signed mail placed in the maildir comes out relabelled.

def pop3_message(p, subject):
    wait_listening(p)
    conn = poplib.POP3("127.0.0.1", p, timeout=TIMEOUT)
    try:
        conn.user(USER)
        conn.pass_(PASSWORD)
        count, _ = conn.stat()
        for i in range(1, count + 1):
            raw = b"\r\n".join(conn.retr(i)[1])
            if headers_of(raw)["Subject"] == subject:
                return raw
        return None
    finally:
        conn.quit()


def content_type_line(raw):
    for line in raw.split(b"\r\n"):
        if line.startswith(b"Content-Type: "):
            return line.decode(errors="replace")
    return ""


def test_pop3(label, tunnel_var):
    subject = ENV["E2E_SIGNED_SUBJECT"]
    try:
        raw = pop3_message(port(tunnel_var), subject)
    except (OSError, poplib.error_proto) as e:
        check(f"pop3 {label}: download through the tunnel", False, repr(e))
        return None
    check(f"pop3 {label}: download through the tunnel", raw is not None, "message not found")
    if raw is None:
        return None
    line = content_type_line(raw)
    check(f"pop3 {label}: multipart/signed relabelled", line.startswith(
        "Content-Type: multipart/mixed;"), line)
    check(f"pop3 {label}: body intact", b"the signed part" in raw, "body missing")
    return raw


def test_pop3_direct():
    raw = pop3_message(port("POP3_PORT"), ENV["E2E_SIGNED_SUBJECT"])
    line = content_type_line(raw or b"")
    check("pop3 direct: the server itself keeps multipart/signed",
          line.startswith("Content-Type: multipart/signed;"), line)


def test_curl_pop3_tls():
    url = f"pop3://127.0.0.1:{port('TUNNEL_POP3S')}/1"
    out = subprocess.run(["curl", "-sS", "--max-time", str(TIMEOUT), "-u", f"{USER}:{PASSWORD}",
                          url], capture_output=True)
    ok = out.returncode == 0 and b"Content-Type: multipart/mixed;" in out.stdout
    check("pop3 TLS: curl downloads through the tunnel", ok,
          f"exit {out.returncode}: {out.stderr.decode(errors='replace').strip()}")


# Mail upload: X-Mailer replaced and the custom header added on the way.

def mail_text(subject, client):
    return (
        "From: Tester <tester@e2e.test>\r\n"
        "To: reader@e2e.test\r\n"
        f"Subject: {subject}\r\n"
        f"X-Mailer: {CLIENT_MAILER}\r\n"
        f"X-E2E-Client: {client}\r\n"
        "\r\n"
        "A mail through the tunnel.\r\n"
    )


def delivered(subject, limit=20.0):
    folder = os.path.join(ENV["E2E_SMTP_MAILDIR"], "new")
    end = time.monotonic() + limit
    while time.monotonic() < end:
        for name in os.listdir(folder):
            with open(os.path.join(folder, name), "rb") as f:
                raw = f.read()
            if headers_of(raw)["Subject"] == subject:
                return raw
        time.sleep(0.2)
    return None


def check_delivered(label, subject):
    raw = delivered(subject)
    check(f"smtp {label}: mail delivered", raw is not None, "not delivered")
    if raw is None:
        return
    h = headers_of(raw)
    want = ENV["E2E_XMAILER"]
    check(f"smtp {label}: X-Mailer replaced", h["X-Mailer"] == want, repr(h["X-Mailer"]))
    check(f"smtp {label}: custom header inserted", h["X-E2E-Tunnel"] == "mail",
          repr(h["X-E2E-Tunnel"]))


def test_smtp(label, tunnel_var):
    subject = f"e2e mail {label} " + uuid.uuid4().hex[:8]
    p = port(tunnel_var)
    wait_listening(p)
    try:
        with smtplib.SMTP("127.0.0.1", p, timeout=TIMEOUT) as conn:
            conn.sendmail("tester@e2e.test", ["reader@e2e.test"], mail_text(subject, "smtplib"))
    except (OSError, smtplib.SMTPException) as e:
        check(f"smtp {label}: smtplib sends through the tunnel", False, repr(e))
        return
    check(f"smtp {label}: smtplib sends through the tunnel", True)
    check_delivered(label, subject)


def test_smtp_starttls_only():
    """A server that takes mail only after STARTTLS, through a tunnel that
    upgrades the server leg: the client stays plain, the mail is rewritten,
    and the server received it encrypted (Exim's "esmtps")."""
    subject = "e2e mail starttls " + uuid.uuid4().hex[:8]
    p = port("TUNNEL_SMTP_STARTTLS")
    wait_listening(p)
    try:
        with smtplib.SMTP("127.0.0.1", p, timeout=TIMEOUT) as conn:
            conn.sendmail("tester@e2e.test", ["reader@e2e.test"], mail_text(subject, "smtplib"))
    except (OSError, smtplib.SMTPException) as e:
        check("smtp starttls: smtplib sends through the upgraded tunnel", False, repr(e))
        return
    check("smtp starttls: smtplib sends through the upgraded tunnel", True)
    check_delivered("starttls", subject)
    raw = delivered(subject) or b""
    check("smtp starttls: received over TLS", b"with esmtps" in raw,
          repr(headers_of(raw)["Received"]))


def test_curl_smtp():
    subject = "e2e mail curl " + uuid.uuid4().hex[:8]
    out = subprocess.run(
        ["curl", "-sS", "--max-time", str(TIMEOUT), f"smtp://127.0.0.1:{port('TUNNEL_SMTP')}",
         "--mail-from", "tester@e2e.test", "--mail-rcpt", "reader@e2e.test", "-T", "-"],
        input=mail_text(subject, "curl").encode(), capture_output=True)
    check("smtp curl: sends through the tunnel", out.returncode == 0,
          out.stderr.decode(errors="replace").strip())
    if out.returncode == 0:
        check_delivered("curl", subject)


def main():
    steps = [
        test_news,
        test_pop3_direct,
        lambda: test_pop3("plain", "TUNNEL_POP3"),
        lambda: test_pop3("TLS", "TUNNEL_POP3S"),
        test_curl_pop3_tls,
        lambda: test_smtp("plain", "TUNNEL_SMTP"),
        lambda: test_smtp("TLS", "TUNNEL_SMTPS"),
        test_smtp_starttls_only,
        test_curl_smtp,
    ]
    for step in steps:
        try:
            step()
        except Exception as e:  # one broken step must not hide the others
            check(getattr(step, "__name__", "step"), False, repr(e))
    passed = sum(results)
    print(f"e2e: {passed} passed, {len(results) - passed} failed", flush=True)
    return 0 if results and all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
