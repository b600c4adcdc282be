"""A manual page: texts and blocks of Doxygen's XML as lines of troff."""
import re
import sys
import textwrap

SECTION = "3devfacts"
ESCAPES = str.maketrans({"\\": r"\e", "-": r"\-", "'": r"\(aq", '"': r"\(dq", "`": r"\(ga", "^": r"\(ha", "~": r"\(ti", "\u00a0": r"\ "})
SIGNS = {"sp": " ", "linebreak": " ", "nonbreakablespace": "\u00a0", "ndash": "--", "mdash": "--",
         "lsquo": "'", "rsquo": "'", "ldquo": '"', "rdquo": '"'}
BLOCKS = {"para", "itemizedlist", "orderedlist", "programlisting", "verbatim", "sect1"}


def escape(text):
    return "".join(c if c.isascii() else f"\\[u{ord(c):04X}]" for c in text.translate(ESCAPES))


def bold(text):
    return rf"\fB{escape(text)}\fR"


def italic(text):
    return rf"\fI{escape(text)}\fR"


def link(name):
    return f"{bold(name)}({SECTION})"


def plain(element):
    """The words of an element without their marks."""
    pieces = [element.text or ""]
    for child in element:
        pieces += [SIGNS.get(child.tag, ""), plain(child), child.tail or ""]
    return "".join(pieces)


def guarded(lines):
    """No text is a request of troff's; an apostrophe is escaped anyway."""
    return [r"\&" + line if line.startswith(".") else line for line in lines]


class Page:
    """The lines of a page, and the pages that they name."""

    def __init__(self, reference, name, names, brief, version):
        self.reference = reference
        self.arguments = set()
        self.named = set()
        # Neither hyphens nor wide gaps in what is to be copied.
        self.lines = [f'.TH {name} {SECTION} "" "devfacts {version}"', ".nr HY 0", ".nh", ".ad l", ".ss 12 0",
                      ".SH NAME", rf"{escape(', '.join(names))} \- {escape(brief)}"]

    def heading(self, title):
        self.lines.append(f'.SH "{escape(title.upper())}"')
        self.begin(".PP")

    def begin(self, paragraph):
        """Text follows; each paragraph after the first one begins with this request."""
        self.paragraph = paragraph
        self.at_start = True

    def separate(self):
        if not self.at_start:
            self.lines.append(self.paragraph)
        self.at_start = False

    def text(self, text):
        """A paragraph of escaped text."""
        text = " ".join(text.split())
        if not text:
            return
        self.separate()
        constants = self.reference.constants
        self.named |= {constants[word] for word in re.findall(r"\w+", text) if word in constants}
        self.lines += guarded(textwrap.wrap(text, 79, break_long_words=False, break_on_hyphens=False))

    def code(self, lines):
        self.separate()
        self.lines += [".RS 4", ".EX", *guarded(lines), ".EE", ".RE"]

    def declare(self, lines):
        """Lines of a synopsis, escaped."""
        self.lines += [".nf", *lines, ".fi"]

    def item(self, start, paragraph, write_body):
        outer = self.paragraph
        self.lines += start
        self.begin(paragraph)
        write_body()
        self.begin(outer)
        self.at_start = False

    def tagged(self, tag, write_body):
        self.item([".TP", tag], ".IP", write_body)

    def inline(self, element):
        inside = escape(element.text or "") + "".join(self.inline(child) + escape(child.tail or "") for child in element)
        if element.tag in SIGNS:
            return escape(SIGNS[element.tag])
        if element.tag == "ref":
            return self.name(element)
        if element.tag == "computeroutput":
            return self.literal(plain(element), inside)
        if element.tag in ("emphasis", "bold"):
            return rf"\fI{inside}\fR"
        if element.tag in ("para", "span", "ulink"):
            return inside
        sys.exit(f"manual: no idea how to show <{element.tag}>: {plain(element)}")

    def literal(self, words, inside):
        font = "I" if words.strip(" ") in self.arguments else "B"
        return re.sub(r"^( *)(.*?)( *)$", rf"\1\\f{font}\2\\fR\3", inside, flags=re.DOTALL)

    def name(self, element):
        """A reference to a function, to something else that has a page, to a header, or to a section of one."""
        words, target = plain(element), element.get("refid")
        page, group = self.reference.page_of.get(target), self.reference.groups.get(target)
        if page:
            self.named.add(page)
        if group:
            return italic(words) if group.parent else link(page)
        return bold(words.removesuffix("()")) + ("()" if words.endswith("()") else "")

    def flow(self, element):
        """An element that has text and blocks in any order."""
        run = escape(element.text or "")
        for child in element:
            if child.tag in BLOCKS:
                self.text(run)
                self.block(child)
                run = ""
            else:
                run += self.inline(child)
            run += escape(child.tail or "")
        self.text(run)

    def block(self, element):
        if element.tag == "sect1":
            self.heading(plain(element.find("title")))
            self.blocks(element.iterfind("para"))
        elif element.tag == "programlisting":
            self.code([escape(plain(line)) for line in element])
        elif element.tag == "verbatim":
            self.code(escape(element.text.rstrip()).split("\n"))
        elif element.tag in ("itemizedlist", "orderedlist"):
            self.list(element)
        else:
            self.flow(element)

    def blocks(self, elements):
        for element in elements:
            self.block(element)

    def list(self, element):
        in_item = self.paragraph != ".PP"
        self.lines += [".RS"] if in_item else []
        for number, entry in enumerate(element, 1):
            mark, width = (r"\(bu", 2) if element.tag == "itemizedlist" else (f"{number}.", 4)
            self.item([f".IP {mark} {width}"], f'.IP "" {width}', lambda entry=entry: self.flow(entry))
        self.lines += [".RE"] if in_item else []
