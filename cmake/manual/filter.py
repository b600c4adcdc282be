"""Doxygen's input filter: what comments and documents have in backquotes comes through to the byte, and so does a `%`. Doxygen's own
code spans lose a `%`, end at an apostrophe, take `\\n` for a command and two blanks for one. A document has its file's name as a label, by
which it is referred to: Doxygen loses the links between files in a folder whose name has a blank."""
import pathlib
import re
import sys

SPECIAL = re.compile(r"---?|::|[\\@<>&%#\"'.]|  +")
COMMENT = re.compile(r"/\*\*.*?\*/", re.DOTALL)
# Lines of a document that are no code block's.
LINES = re.compile(r"(?:^(?!    |```).*\n)+", re.MULTILINE)
# What Doxygen keeps as it is, a code span, a link to a document, or a `%`, which it takes for a mark against links.
PIECE = re.compile(r'@code.*?@endcode|"[^"]*"|`(?P<code>[^`]+)`|\[(?P<words>[^]]+)\]\((?P<document>\w+)\.md[^)]*\)|%', re.DOTALL)


def escaped(special):
    return {"'": "&apos;", " ": "&nbsp;" * len(special[0])}.get(special[0][0], "\\" + special[0])


def piece(found):
    if found["code"]:
        return f"<code>{SPECIAL.sub(escaped, found['code'])}</code>"
    if found["document"]:
        return f'@ref document_{found["document"]} "{found["words"]}"'
    return r"\%" if found[0] == "%" else found[0]


file = pathlib.Path(sys.argv[1])
text = file.read_text(encoding="utf-8")
if file.suffix == ".md":
    text = re.sub(r"^# .*", lambda title: f"{title[0]} {{#document_{file.stem}}}", text)
print((LINES if file.suffix == ".md" else COMMENT).sub(lambda block: PIECE.sub(piece, block[0]), text), end="")
