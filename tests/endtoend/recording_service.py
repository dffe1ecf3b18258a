"""quillmate-service behind a proxy that remembers what it was asked."""

import http.client
import http.server
import json
import os
import socket
import ssl
import subprocess
import threading

from local_service import LIVE_HOST, Service


class RecordingService:
    """Stands in the place of the live host. `asked` holds the path and the body, read from its JSON, of each POST."""

    def __init__(self, program):
        self.asked = []
        self.service = Service(program, [])
        certificate = self.service.folder.name + "/proxy.pem"
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "2"]
            + ["-subj", "/CN=proxy", "-addext", "subjectAltName=DNS:" + LIVE_HOST]
            + ["-keyout", certificate + ".key", "-out", certificate],
            check=True,
            capture_output=True,
        )
        self.certificate = certificate
        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), self.handler())
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate, certificate + ".key")
        self.server.socket = context.wrap_socket(self.server.socket, server_side=True)
        self.thread = threading.Thread(target=self.server.serve_forever)
        self.thread.start()

    def environment(self):
        return {
            "QUILLMATE_CONNECT_TO": f"{LIVE_HOST}=127.0.0.1:{self.server.server_address[1]}",
            "QUILLMATE_CA_FILE": self.certificate,
        }

    def handler(self):
        recording = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                self.pass_on(None)

            def do_POST(self):
                body = self.rfile.read(int(self.headers["Content-Length"]))
                recording.asked.append((self.path, json.loads(body)))
                self.pass_on(body)

            def pass_on(self, body):
                status, headers, reply = recording.ask(self.command, self.path, dict(self.headers), body)
                self.send_response(status)
                for name, value in headers:
                    if name.lower() not in ("connection", "transfer-encoding", "content-length", "date", "server"):
                        self.send_header(name, value)
                self.send_header("Content-Length", str(len(reply)))
                self.end_headers()
                self.wfile.write(reply)

            def log_message(self, *_):
                pass

        return Handler

    def ask(self, command, path, headers, body):
        """What the service replies: the status, the headers and the body."""
        address, port = self.service.origin.removeprefix("https://").split(":")
        context = ssl.create_default_context(cafile=self.service.authority)
        connection = http.client.HTTPSConnection(LIVE_HOST, context=context)
        connection.sock = context.wrap_socket(socket.create_connection((address, int(port))), server_hostname=LIVE_HOST)
        try:
            connection.request(command, path, body, headers)
            reply = connection.getresponse()
            return reply.status, reply.getheaders(), reply.read()
        finally:
            connection.close()

    def end(self):
        self.server.shutdown()
        self.thread.join()
        self.server.server_close()
        return self.service.end()
