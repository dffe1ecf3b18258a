"""A mail drop on loopback that hands out its messages once (POP3, RFC 1939)."""

import socketserver
import threading


class MailDrop:
    def __init__(self, messages):
        self.messages = [message.replace(b"\r\n", b"\n").replace(b"\n", b"\r\n") for message in messages]
        drop = self

        class Session(socketserver.StreamRequestHandler):
            def handle(self):
                self.say("+OK ready")
                for line in self.rfile:
                    words = line.decode().split()
                    if not self.answer(words[0].upper() if words else "", words[1:]):
                        return

            def say(self, text):
                self.wfile.write(text.encode() + b"\r\n")

            def say_lines(self, lines):
                self.say("+OK")
                self.wfile.write(b"".join((b"." if line.startswith(b".") else b"") + line for line in lines))
                self.say(".")

            def answer(self, command, arguments):
                messages = drop.messages
                if command == "STAT":
                    self.say(f"+OK {len(messages)} {sum(map(len, messages))}")
                elif command == "LIST":
                    self.say_lines(b"%d %d\r\n" % (i + 1, len(each)) for i, each in enumerate(messages))
                elif command == "UIDL":
                    self.say_lines(b"%d message-%d\r\n" % (i + 1, i) for i in range(len(messages)))
                elif command == "RETR":
                    self.say_lines(messages[int(arguments[0]) - 1].splitlines(keepends=True))
                elif command in ("USER", "PASS", "DELE", "NOOP"):
                    self.say("+OK")
                elif command == "CAPA":
                    self.say_lines([b"USER\r\n", b"UIDL\r\n"])
                elif command == "QUIT":
                    self.say("+OK")
                    return False
                else:
                    self.say("-ERR unknown command")
                return True

        class Server(socketserver.ThreadingTCPServer):
            daemon_threads = True

        self.server = Server(("127.0.0.1", 0), Session)
        self.port = self.server.server_address[1]

    def __enter__(self):
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *_):
        self.server.shutdown()
        self.server.server_close()
