import json
import os
import signal
import socket
import ssl
import subprocess
import tempfile
import time
import unittest
import urllib.error
import urllib.request
from pathlib import Path

from tests.tools import TOOLS

from services import Faults, LocalServices
from services.log import parse_event

PATIENCE = 20
QUERY = ("/5/binaries/query?os=OS_X_10_9_5&platform=launcher_macosx&target=archive&format=json"
         "&currentSoftwareVersion=&partner=")
EVENTS = "/1/installerlog/create"
IMAGE = os.urandom(300_000)


class Running(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)
        (self.scratch / "image").write_bytes(IMAGE)
        self.services = LocalServices(str(self.scratch / "image"), events_file=str(self.scratch / "events"))
        self.services.__enter__()
        self.addCleanup(self.services.__exit__)

    def fetch(self, url, data=None):
        context = ssl.create_default_context(cafile=self.services.certificate)
        with urllib.request.urlopen(url, data, PATIENCE, context=context) as answer:
            return answer.status, answer.geturl(), answer.read()

    def check(self, query):
        try:
            return json.loads(self.fetch(f"https://{self.services.binaries.host}{query}")[2])
        except urllib.error.HTTPError as error:
            with error:
                return json.loads(error.read())

    def test_check_names_the_image_and_wants_all_keys(self):
        answer = self.check(QUERY + "a%2Bb%20c&d=e")
        self.assertEqual(answer, {"code": 200, "content": {
            "download_url": f"https://{self.services.image.host}/Tolvix.dmg", "version": "5.1.0"}})
        self.assertEqual(self.services.binaries.queries[-1]["partner"], "a+b c&d=e")
        self.assertEqual(self.check(QUERY.replace("target=archive&", "")), {"code": 400, "message": "missing: target"})
        self.assertEqual(self.check("/elsewhere")["code"], 404)
        self.services.binaries.body = "string-code"
        self.assertEqual(self.check(QUERY)["code"], "200")

    # Faults that a client ought to survive; the others show in what fails by them.
    def test_image_service_sends_the_image_as_told(self):
        cases = (
            ({}, "/a%20b.dmg"), ({"framing": "chunked"}, "/a%20b.dmg"), ({"framing": "close"}, "/a%20b.dmg"),
            ({"redirects": 3}, "/hop/0/a%20b.dmg"), ({"redirects": 1, "redirect_to": "/b.dmg"}, "/hop/0/b.dmg"))
        for faults, final in cases:
            with self.subTest(**faults):
                self.services.image.faults = Faults(**faults)
                status, url, body = self.fetch(f"https://{self.services.image.host}/a%20b.dmg")
                self.assertEqual((status, url), (200, f"https://{self.services.image.host}{final}"))
                self.assertEqual(body, IMAGE)
        start = time.monotonic()
        self.services.image.faults = Faults(delay=0.3, bytes_per_second=len(IMAGE) * 2)
        self.assertEqual(self.fetch(self.services.binaries.download_url)[2], IMAGE)
        self.assertGreater(time.monotonic() - start, 0.75)

    def test_log_service_takes_events_up_and_down(self):
        url = f"https://{self.services.log.host}{EVENTS}"
        self.fetch(url, b"step=23.01&content={}")
        self.services.log.refuse_connections()
        with self.assertRaises(urllib.error.URLError) as caught:
            self.fetch(url, b"step=23.11")
        self.assertIsInstance(caught.exception.reason, ConnectionRefusedError)
        self.services.log.accept_connections()
        self.fetch(url, b"step=23.12&lang=\xff")
        self.assertTrue(self.services.log.wait_for_step("23.12", PATIENCE))
        self.assertEqual(self.services.log.steps, ["23.01", "23.12"])
        self.assertEqual(self.services.log.events[-1].raw, b"step=23.12&lang=\xff")
        lines = [json.loads(line) for line in (self.scratch / "events").read_text().splitlines()]
        self.assertEqual([line["meaning"] for line in lines], ["launched", "check ended"])
        self.assertEqual(lines[1]["body"], "step=23.12&lang=\ufffd")
        self.assertLess(abs(lines[1]["time"] - time.time()), 3600)


class Parsing(unittest.TestCase):
    def test_events_with_unescaped_values(self):
        cases = (
            ('lang=a&b=c=&version=&step=23.11', {"lang": "a&b=c=", "version": "", "step": "23.11"}, None),
            ('content={"partnerName":"x&step=9&y"}&step=23.12',
             {"content": '{"partnerName":"x&step=9&y"}', "step": "23.12"}, {"partnerName": "x&step=9&y"}),
            # Cut short, as a body with characters beyond ASCII arrives.
            ('step=23.01&content={"partnerName":"\u00e9', {"step": "23.01", "content": '{"partnerName":"\u00e9'}, None))
        for body, fields, content in cases:
            with self.subTest(body):
                event = parse_event(1.5, body.encode())
                self.assertEqual((event.fields, event.content), (fields, content))

    def test_faults_from_words(self):
        faults = Faults()
        for name, text in (("cut-after", "10"), ("hang", ""), ("delay", "0.5"), ("redirect-to", "/a=b")):
            faults.set_text(name, text)
        self.assertEqual(faults, Faults(cut_after=10, hang=True, delay=0.5, redirect_to="/a=b"))
        wrong = (("cut-after", "-1"), ("status", "x"), ("hang", "maybe"), ("framing", "none"), ("nothing", "1"))
        for name, text in wrong:
            with self.subTest(name), self.assertRaises((AttributeError, ValueError)):
                faults.set_text(name, text)


class CommandLine(unittest.TestCase):
    def test_says_where_it_is_and_leaves_nothing_when_told_to_end(self):
        with tempfile.TemporaryDirectory() as scratch:
            ready = Path(scratch, "ready")
            program = subprocess.Popen(
                [str(TOOLS / "local_services.py"), "--ready-file", str(ready), "--fault", "log:refuse"],
                env={**os.environ, "TMPDIR": scratch, "PYTHONDONTWRITEBYTECODE": "1"}, stdout=subprocess.DEVNULL)
            self.addCleanup(program.wait)
            self.addCleanup(program.kill)
            limit = time.monotonic() + PATIENCE
            while not ready.exists() and program.poll() is None and time.monotonic() < limit:
                time.sleep(0.02)
            facts = json.loads(ready.read_text())
            self.assertEqual(facts["pid"], program.pid)
            socket.create_connection(facts["binaries"].split(":"), PATIENCE).close()
            program.send_signal(signal.SIGTERM)
            self.assertEqual(program.wait(PATIENCE), 0)
            self.assertEqual(os.listdir(scratch), [])
