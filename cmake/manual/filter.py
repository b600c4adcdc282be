"""Doxygen's input filter: what comments and documents have in backquotes comes through to the byte, and so does a `%`. Doxygen's own
code spans lose a `%`, end at an apostrophe, take `\\n` for a command and two blanks for one."""
import re
import sys

SPECIAL = re.compile(r"---?|::|[\\@<>&%#\"'.]|  +")
COMMENT = re.compile(r"/\*\*.*?\*/", re.DOTALL)
# Lines of a document that are no code block's.
LINES = re.compile(r"(?:^(?!    |```).*\n)+", re.MULTILINE)
# What Doxygen keeps as it is, a code span, or a `%`, which it takes for a mark against links.
PIECE = re.compile(r'@code.*?@endcode|"[^"]*"|`([^`]+)`|%', re.DOTALL)


def escaped(special):
    return {"'": "&apos;", " ": "&nbsp;" * len(special[0])}.get(special[0][0], "\\" + special[0])


def piece(found):
    if found[1]:
        return f"<code>{SPECIAL.sub(escaped, found[1])}</code>"
    return r"\%" if found[0] == "%" else found[0]


with open(sys.argv[1], encoding="utf-8") as file:
    prose = LINES if sys.argv[1].endswith(".md") else COMMENT
    sys.stdout.write(prose.sub(lambda block: PIECE.sub(piece, block[0]), file.read()))
