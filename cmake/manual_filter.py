"""Doxygen's input filter: what comments and documents have in backquotes comes through to the byte. Doxygen's own code spans lose a
`%`, end at an apostrophe and take `\\n` for a command."""
import re
import sys

SPECIAL = re.compile(r"---?|::|[\\@<>&%#\"'.]")
COMMENT = re.compile(r"/\*\*.*?\*/", re.DOTALL)
# Lines of a document that are no code block's.
LINES = re.compile(r"(?:^(?!    |```).*\n)+", re.MULTILINE)


def literal(span):
    def escaped(special):
        return "&apos;" if special[0] == "'" else "\\" + special[0]

    return "<code>" + SPECIAL.sub(escaped, span[1]) + "</code>"


def prose(block):
    return re.sub(r"`([^`]+)`", literal, block[0])


with open(sys.argv[1], encoding="utf-8") as file:
    sys.stdout.write((LINES if sys.argv[1].endswith(".md") else COMMENT).sub(prose, file.read()))
