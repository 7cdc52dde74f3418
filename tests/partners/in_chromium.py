"""Chromium."""
from browsers import Page, chromium


class Sentences(Page):
    browser = staticmethod(chromium)
