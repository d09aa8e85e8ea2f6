"""Asks the web services as the installer does, and judges what they answer."""
