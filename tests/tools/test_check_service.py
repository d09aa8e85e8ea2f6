"""The judge of services, on local ones with each fault; what it says is held against what the schema says."""
import json
import subprocess
import unittest

from tests.tools import TOOLS

import check_service
from servicecheck.answer import judge_answer
from servicecheck.findings import FAILURE, WARNING, Findings
from services import Faults, LocalServices
from services.binaries import BODIES

try:
    import jsonschema
except ImportError:
    jsonschema = None

SCHEMA = json.loads((TOOLS.parent / "docs" / "check-answer.schema.json").read_text())


def success(address="https://a.example/Tolvix.dmg", version="5.1.0", code=200):
    return {"code": code, "content": {"download_url": address, "version": version}}


class Judging(unittest.TestCase):
    """Each row: an answer, whether the installer gets an image from it, and whether it is a good answer."""

    ROWS = (
        (success(), True, True),
        (success("HTTPS://a.example:8443/x/y%20z/../Tolvix-5.1.0.dmg?key=%20"), True, None),
        (success(code="200 OK"), True, False),
        (success(code=200.9), True, False),
        (success("http://a.example/Tolvix.dmg"), True, False),
        (success(version=""), True, False),
        (success(code=201), False, False),
        (success(code=True), False, False),
        ({"code": 404, "message": "Not found"}, False, True),
        ({"code": 404}, False, False),
        ({"code": 200, "message": "fine"}, False, False),
        ({"content": {}}, False, False),
        (success(version=5), False, False),
        (success(7), False, False),
        (success("https://a.example/My App.dmg"), False, False),
        (success("https://a.example/My%20App.dmg"), False, False),
        (success("https://a.example/100%.dmg"), False, False),
        (success("https://a.example/a%2Fb.dmg"), False, False),
        (success("https://a.example/.."), False, False),
        (success("https://a.example/"), False, False),
        (success("https://a.example"), False, False),
        (success("https:///Tolvix.dmg"), False, False),
        (success("ftp://a.example/Tolvix.dmg"), False, False),
        (success("Tolvix.dmg"), False, False),
        ([success()], False, False),
    )

    def test_answers(self):
        for answer, usable, _ in self.ROWS:
            with self.subTest(answer=answer):
                findings = Findings()
                address = judge_answer(json.dumps(answer).encode(), findings)
                self.assertEqual((address is not None, findings.failed), (usable, not usable), findings.lines)

    @unittest.skipIf(jsonschema is None, "needs python3-jsonschema")
    def test_schema_describes_the_good_ones(self):
        validator = jsonschema.Draft202012Validator(SCHEMA)
        validator.check_schema(SCHEMA)
        for answer, _, good in self.ROWS:
            if good is not None:
                with self.subTest(answer=answer):
                    self.assertEqual(validator.is_valid(answer), good)
        for example in SCHEMA["examples"]:
            self.assertTrue(validator.is_valid(example))


class Asking(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.services = LocalServices(__file__)
        cls.services.__enter__()
        cls.addClassCleanup(cls.services.__exit__)

    def setUp(self):
        for service in (self.services.binaries, self.services.image, self.services.log):
            service.faults = Faults()
        self.services.binaries.body = None

    def check(self, *words):
        return check_service.run(check_service.parse_arguments(
            [self.services.binaries.host, "--image", "--log", self.services.log.host, "--ca",
             self.services.certificate, "--timeout", "20", *words]))

    def assert_finding(self, findings, weight, pattern):
        self.assertRegex("\n".join(findings.texts(weight)), pattern)

    def test_service_in_order(self):
        findings = self.check("--partner", "a+b c&d", "--build", "2001")
        self.assertEqual(findings.texts(FAILURE), [])
        self.assertEqual(len(findings.texts(WARNING)), 3)  # the certificates end in two days
        values = self.services.binaries.queries[-1]
        self.assertEqual((values["partner"], values["currentSoftwareVersion"]), ("a+b c&d", "2001"))
        self.assertEqual(self.services.log.events[-1].fields["anonymouscomputerid"], "CHECK-SERVICE")

    def test_bodies_that_no_installer_takes(self):
        for name in BODIES:
            with self.subTest(name):
                self.services.binaries.body = name
                self.assertTrue(self.check().failed)

    def test_faults(self):
        rows = (
            ("binaries", {"certificate": "wrong-host"}, FAILURE, "no answer: .*certificate is refused"),
            ("binaries", {"certificate": "expired"}, FAILURE, "no answer: .*certificate is refused.*expired"),
            ("binaries", {"status": 500}, WARNING, "HTTP status is 500"),
            ("binaries", {"redirects": 21}, FAILURE, "more than 20 redirections"),
            ("binaries", {"cut_after": 5}, FAILURE, "broke off|bytes came"),
            ("binaries", {"redirects": 1, "redirect_to": "http"}, FAILURE, "from an encrypted address"),
            ("image", {"status": 404}, FAILURE, "the image: HTTP status 404"),
            ("image", {"framing": "chunked"}, WARNING, "without its length"),
            ("image", {"certificate": "wrong-host"}, FAILURE, "no image: .*certificate is refused"),
            ("log", {"certificate": "expired"}, WARNING, "the event is lost"),
            ("log", {"status": 500}, WARNING, "log service answers with HTTP status 500"))
        for service, faults, weight, pattern in rows:
            with self.subTest(service, **faults):
                self.setUp()
                getattr(self.services, service).faults = Faults(**faults)
                self.assert_finding(self.check(), weight, pattern)

    def test_service_that_is_down_or_silent(self):
        self.services.binaries.faults.hang = True
        self.assert_finding(self.check("--timeout", "0.5"), FAILURE, "no answer in time")
        self.services.binaries.refuse_connections()
        self.addCleanup(self.services.binaries.accept_connections)
        self.assert_finding(self.check(), FAILURE, "refused")

    def test_command_line(self):
        program = [str(TOOLS / "check_service.py"), self.services.binaries.host]
        untrusted = subprocess.run(program + ["--json"], capture_output=True, text=True, env={"PATH": "/usr/bin:/bin"})
        self.assertEqual(untrusted.returncode, 1)
        self.assertEqual(json.loads(untrusted.stdout)[0]["weight"], FAILURE)
        missing = subprocess.run(program + ["--ca", "/nonexistent"], capture_output=True, text=True)
        self.assertEqual((missing.returncode, missing.stdout), (2, ""))
        self.assertIn("/nonexistent", missing.stderr)
