"""Tests that drive the built program as a person would."""
