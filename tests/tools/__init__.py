"""Tests of the developer tools, which are not installed anywhere: their folder is put on the path here."""
import sys
from pathlib import Path

TOOLS = Path(__file__).resolve().parents[2] / "tools"
sys.path.insert(0, str(TOOLS))
