#!/usr/bin/env python3
"""Runs a test program with the update tests' servers around it.

    with_servers.py [--fault] [--fault-tls] [--nginx] [--limit-rate 8m] [--windows-paths] [--timeout S]
                    -- COMMAND [ARG...]

A Windows test program under Wine cannot start Linux servers, so this starts them first, on 127.0.0.1 and free
ports, all serving one fresh folder, and hands the program their addresses in its environment:

    NV_SERVED_DIR     the folder the servers serve (the program writes the files it fetches there; with
                      --windows-paths as Wine shows it, Z:\\...)
    NV_FAULT_URL      the fault server (fault_server.py), http
    NV_FAULT_TLS_URL  the same server over https with a self-signed certificate no system trusts
    NV_NGINX_URL      nginx (nginx_harness.py), each connection limited to --limit-rate if given
    NV_NGINX_LOG      nginx's access log: one JSON record a request (path, range, status, bytes sent)

The servers stop and the folder goes on every way out: the program's end, a time-out (the program's process
group is killed), Ctrl-C. The exit status is the program's (124 after a time-out).
"""

import argparse
import os
import shutil
import signal
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True  # no __pycache__ in the source tree
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from fault_server import FaultServer  # noqa: E402
from nginx_harness import Nginx  # noqa: E402


def self_signed_certificate(folder):
    """A fresh key and certificate for 127.0.0.1, signed by nobody: a client must refuse it."""
    key = os.path.join(folder, "key.pem")
    cert = os.path.join(folder, "cert.pem")
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
         "-keyout", key, "-out", cert, "-days", "2", "-subj", "/CN=127.0.0.1",
         "-addext", "subjectAltName=IP:127.0.0.1"],
        check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=30,
    )
    return cert, key


def as_windows_path(path):
    # Wine's default Z: drive is the Unix root.
    return "Z:" + path.replace("/", "\\")


def run(command, env, timeout):
    process = subprocess.Popen(command, env=env, start_new_session=True)
    try:
        return process.wait(timeout)
    except subprocess.TimeoutExpired:
        print("with_servers: %s ran longer than %d s, stopped" % (command[0], timeout), file=sys.stderr)
        return 124
    except KeyboardInterrupt:
        return 130
    finally:
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--fault", action="store_true")
    parser.add_argument("--fault-tls", action="store_true")
    parser.add_argument("--nginx", action="store_true")
    parser.add_argument("--limit-rate")
    parser.add_argument("--windows-paths", action="store_true")
    parser.add_argument("--timeout", type=int, default=600)
    parser.add_argument("command", nargs=argparse.REMAINDER)
    args = parser.parse_args()
    command = args.command[1:] if args.command[:1] == ["--"] else args.command
    if not command:
        parser.error("no command")

    # SIGTERM (CTest's time-out, a killed make) unwinds like Ctrl-C, so the servers still stop.
    signal.signal(signal.SIGTERM, lambda *_: (_ for _ in ()).throw(KeyboardInterrupt()))
    work = tempfile.mkdtemp(prefix="nv-servers-")
    servers = []
    try:
        root = os.path.join(work, "root")
        os.makedirs(root)
        os.chmod(work, 0o755)
        env = dict(os.environ)
        env["NV_SERVED_DIR"] = as_windows_path(root) if args.windows_paths else root
        if args.fault:
            servers.append(FaultServer(root, os.path.join(work, "fault.log")).start())
            env["NV_FAULT_URL"] = servers[-1].url
        if args.fault_tls:
            tls = os.path.join(work, "tls")
            os.makedirs(tls)
            servers.append(FaultServer(root, tls=self_signed_certificate(tls)).start())
            env["NV_FAULT_TLS_URL"] = servers[-1].url
        if args.nginx:
            nginx_work = os.path.join(work, "nginx")
            os.makedirs(nginx_work)
            servers.append(Nginx(root, nginx_work, args.limit_rate).start())
            env["NV_NGINX_URL"] = servers[-1].url
            env["NV_NGINX_LOG"] = servers[-1].access_log  # one JSON record a request, bytes sent included
        status = run(command, env, args.timeout)
    except KeyboardInterrupt:
        status = 130
    finally:
        for server in reversed(servers):
            server.stop()
        shutil.rmtree(work, ignore_errors=True)
    return status


if __name__ == "__main__":
    sys.exit(main())
