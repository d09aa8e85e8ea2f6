"""Compressed disk images (.dmg) with an HFS+ family volume, made from a folder."""
