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


class Journal(unittest.TestCase):
    def test_log_service_takes_events_up_and_down(self):
        with tempfile.TemporaryDirectory() as scratch, \
                LocalServices(__file__, events_file=str(Path(scratch, "events"))) as services:
            def send(body):
                context = ssl.create_default_context(cafile=services.certificate)
                url = f"https://{services.log.host}/1/installerlog/create"
                urllib.request.urlopen(url, body, PATIENCE, context=context).close()
            send(b"step=23.01&content={}")
            services.log.refuse_connections()
            with self.assertRaises(urllib.error.URLError) as caught:
                send(b"step=23.11")
            self.assertIsInstance(caught.exception.reason, ConnectionRefusedError)
            services.log.accept_connections()
            send(b"step=23.12&lang=\xff")
            self.assertTrue(services.log.wait_for_step("23.12", PATIENCE))
            self.assertEqual(services.log.steps, ["23.01", "23.12"])
            self.assertEqual(services.log.events[-1].raw, b"step=23.12&lang=\xff")
            lines = [json.loads(line) for line in Path(scratch, "events").read_text().splitlines()]
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
