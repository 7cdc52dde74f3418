"""Firefox."""
from browsers import Page, firefox


class Sentences(Page):
    browser = staticmethod(firefox)
