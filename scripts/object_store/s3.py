"""What a store is to its users, and the few requests that it takes to see that it serves."""

import collections
import datetime
import hashlib
import hmac
import http.client
import ssl
import subprocess
import time

Keys = collections.namedtuple("Keys", "access secret")
OWNER = Keys("OBJECTSTOREOWNER0001", "secretOfTheOwner0123456789abcdefABCDEF01")
STRANGER = Keys("OBJECTSTORESTRANGER1", "secretOfTheStranger0123456789abcdefABCD")
DOMAIN = "s3.localhost"  # buckets are served at BUCKET.DOMAIN as well; curl knows that such a name is this machine


def make_certificate(folder):
    certificate = folder / "certificate.pem"
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "3650",
         "-subj", "/CN=object-store", "-addext", f"subjectAltName=IP:127.0.0.1,DNS:localhost,DNS:{DOMAIN},DNS:*.{DOMAIN}",
         "-keyout", certificate.with_name("key.pem"), "-out", certificate],
        check=True, stderr=subprocess.DEVNULL)
    return certificate


class Store:
    def __init__(self, port, region):
        self.port = port
        self.region = region
        self.secure_port = None

    def sign(self, method, path):
        now = datetime.datetime.now(datetime.timezone.utc).strftime("%Y%m%dT%H%M%SZ")
        nothing = hashlib.sha256(b"").hexdigest()
        headers = {"host": f"127.0.0.1:{self.port}", "x-amz-content-sha256": nothing, "x-amz-date": now}
        names = ";".join(headers)
        lines = "".join(f"{name}:{value}\n" for name, value in headers.items())
        request = f"{method}\n{path}\n\n{lines}\n{names}\n{nothing}"
        scope = f"{now[:8]}/{self.region}/s3/aws4_request"
        text = f"AWS4-HMAC-SHA256\n{now}\n{scope}\n{hashlib.sha256(request.encode()).hexdigest()}"
        key = ("AWS4" + OWNER.secret).encode()
        for part in [*scope.split("/"), text]:
            key = hmac.digest(key, part.encode(), "sha256")
        return headers | {"Authorization": f"AWS4-HMAC-SHA256 Credential={OWNER.access}/{scope}, "
                                           f"SignedHeaders={names}, Signature={key.hex()}"}

    def request(self, method, path):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=20)
        try:
            connection.request(method, path, body="" if method == "PUT" else None, headers=self.sign(method, path))
            return connection.getresponse().status
        finally:
            connection.close()

    def until_done(self, method, path, check):
        while True:
            try:
                # 409: the bucket is there, from an attempt whose answer was lost.
                if self.request(method, path) in (200, 204, 409):
                    return
            except (OSError, http.client.HTTPException):
                pass
            check()
            time.sleep(0.02)

    def make_bucket(self, name, check):
        """With an object, since its first one may find a store that is not ready for objects yet."""
        self.until_done("PUT", f"/{name}", check)
        for method in ("PUT", "GET", "DELETE"):
            self.until_done(method, f"/{name}/.object-store-probe", check)
        if self.secure_port:
            self.until_secure(check)

    def until_secure(self, check):
        context = ssl.create_default_context()
        context.check_hostname, context.verify_mode = False, ssl.CERT_NONE
        while True:
            try:
                http.client.HTTPSConnection("127.0.0.1", self.secure_port, timeout=20, context=context).connect()
                return
            except OSError:
                check()
                time.sleep(0.02)
