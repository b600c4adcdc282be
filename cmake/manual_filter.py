"""Doxygen's input filter: what a comment has in backquotes comes through to the byte. Doxygen's own code spans lose a `%`, end at
an apostrophe and take `\\n` for a command."""
import re
import sys

SPECIAL = re.compile(r"---?|::|[\\@<>&%#\"'.]")


def literal(span):
    def escaped(special):
        return "&apos;" if special[0] == "'" else "\\" + special[0]

    return "<code>" + SPECIAL.sub(escaped, span[1]) + "</code>"


def comment(block):
    return re.sub(r"`([^`]+)`", literal, block[0])


with open(sys.argv[1], encoding="utf-8") as header:
    sys.stdout.write(re.sub(r"/\*\*.*?\*/", comment, header.read(), flags=re.DOTALL))
