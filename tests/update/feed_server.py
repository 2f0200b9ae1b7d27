#!/usr/bin/env python3
"""A real HTTP server on 127.0.0.1 serving the update-feed cases.

With --tls CERT KEY it serves HTTPS. Prints "PORT <n>" once it listens; runs until it is killed.
/hang accepts the request and never answers; /big sends more than a feed could ever be.
"""
import http.server
import json
import ssl
import sys
import time

FEED = {"version": "2.0", "download": "https://corvane.vantorel.com/download"}

ROUTES = {
    "/update-2.0": (200, "application/json", json.dumps(FEED)),
    "/feed-404": (404, "application/json", json.dumps(FEED)),
    "/html-404": (404, "text/html", "<!doctype html><html><body>Not Found</body></html>"),
}


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *args):
        pass

    def do_GET(self):
        if self.path == "/hang":
            time.sleep(3600)
            return
        if self.path == "/big":
            body = b"{" + b" " * (3 * 1024 * 1024) + b"}"
            self.send_response(200)
            self.send_header("Content-Length", str(len(body)))
            self.end_headers()
            self.wfile.write(body)
            return
        status, kind, text = ROUTES.get(self.path, (404, "text/plain", "no such route"))
        body = text.encode()
        self.send_response(status)
        self.send_header("Content-Type", kind)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)


def main():
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    server.daemon_threads = True
    if sys.argv[1:2] == ["--tls"]:  # --tls CERT KEY: HTTPS with that certificate
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(sys.argv[2], sys.argv[3])
        server.socket = context.wrap_socket(server.socket, server_side=True)
    print("PORT", server.server_address[1], flush=True)
    server.serve_forever()


if __name__ == "__main__":
    sys.exit(main())
