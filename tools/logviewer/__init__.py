"""Reads journals of posted events and shows them as runs and as a funnel."""
