"""Makes the manual pages from the XML that Doxygen makes of the public headers: a page for each function, object, record, type and
enumeration, one for each header, devfacts_NAME, and one for them all, devfacts. manual.py XML_DIR PAGES_DIR VERSION"""
import collections
import pathlib
import re
import sys
import textwrap
import xml.etree.ElementTree as ElementTree

SECTION = "3devfacts"
BUILD_LINE = "cc program.c $(pkg-config --cflags --libs devfacts)"
# The order of a page; any other titled paragraph comes before the examples.
ORDER = ["Description", "Fields", "Values", "Arguments", "Return value", "Failures", "State", "Cost"]
PLURALS = {"Example": "Examples"}
ESCAPES = str.maketrans({"\\": r"\e", "-": r"\-", "'": r"\(aq", "`": r"\(ga", "^": r"\(ha", "~": r"\(ti", '"': r"\(dq", "\u00a0": r"\ "})
SIGNS = {"sp": " ", "ndash": "--", "mdash": "--", "lsquo": "'", "rsquo": "'", "ldquo": '"', "rdquo": '"', "nonbreakablespace": "\u00a0",
         "linebreak": " "}
BLOCKS = {"para", "itemizedlist", "orderedlist", "programlisting", "verbatim", "sect1"}
TITLED = {"simplesect", "parameterlist"}


def escape(text):
    return "".join(c if c.isascii() else f"\\[u{ord(c):04X}]" for c in text.translate(ESCAPES))


def bold(text):
    return rf"\fB{escape(text)}\fR"


def plain(element):
    """The words of an element without their marks."""
    pieces = [element.text or ""]
    for child in element:
        pieces += [SIGNS.get(child.tag, ""), plain(child), child.tail or ""]
    return "".join(pieces)


def declaration(kind, name, rest=""):
    """`int x`, `char *x`, `int (*x)(void)`: as one writes them."""
    kind = re.sub(r"(?<=\w)\(\*", " (*", kind.strip())
    return f"{kind}{'' if kind.endswith('*') or not name else ' '}{name}{rest}".strip()


class Page:
    """The lines of a page, and the references that they make."""

    def __init__(self, manual, name, names, brief, version):
        self.manual = manual
        self.references = set()
        self.arguments = set()
        self.paragraph = ".PP"
        self.lines = [f'.TH {name} {SECTION} "" "devfacts {version}"', ".nr HY 0", ".nh", ".ad l", ".ss 12 0", ".SH NAME",
                      f"{escape(', '.join(names))} \\- {escape(brief)}"]
        self.at_start = True

    def heading(self, title):
        self.lines.append(f'.SH "{escape(title.upper())}"')
        self.paragraph = ".PP"
        self.at_start = True

    def text(self, text):
        text = " ".join(text.split())
        if not text:
            return
        if not self.at_start:
            self.lines.append(self.paragraph)
        self.at_start = False
        self.references |= {self.manual.constants[word] for word in re.findall(r"\w+", text) if word in self.manual.constants}
        filled = textwrap.wrap(text, 79, break_long_words=False, break_on_hyphens=False)
        self.lines += [r"\&" + line if line.startswith(".") else line for line in filled]

    def code(self, lines):
        if not self.at_start:
            self.lines.append(self.paragraph)
        self.lines += [".RS 4", ".EX"]
        self.lines += [r"\&" + line if line.startswith(".") else line for line in lines]
        self.lines += [".EE", ".RE"]
        self.at_start = False

    def item(self, start, paragraph, body):
        self.lines += start
        outer, self.paragraph, self.at_start = self.paragraph, paragraph, True
        body()
        self.paragraph, self.at_start = outer, False

    def tagged(self, tag, body):
        self.item([".TP", tag], ".IP", body)

    def inline(self, element):
        inside = escape(element.text or "")
        for child in element:
            inside += self.inline(child) + escape(child.tail or "")
        if element.tag in SIGNS:
            return escape(SIGNS[element.tag])
        if element.tag == "ref":
            return self.reference(element)
        if element.tag == "computeroutput":
            is_argument = plain(element) in self.arguments
            return rf"\fI{inside}\fR" if is_argument else re.sub(r"^(\s*)(.*?)(\s*)$", r"\1\\fB\2\\fR\3", inside, flags=re.DOTALL)
        if element.tag in ("emphasis", "bold"):
            return rf"\fI{inside}\fR"
        if element.tag in ("para", "span", "ulink"):
            return inside
        sys.exit(f"manual.py: no idea how to show <{element.tag}>: {plain(element)}")

    def reference(self, element):
        words, page = plain(element), self.manual.page_of.get(element.get("refid"))
        if page:
            self.references.add(page)
        group = self.manual.groups.get(element.get("refid"))
        if group:
            return rf"\fI{escape(words)}\fR" if group.parent else f"{bold(page)}({SECTION})"
        return bold(words.removesuffix("()")) + ("()" if words.endswith("()") else "")

    def flow(self, element):
        """An element that holds text and blocks in any order."""
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
        if element.tag == "para":
            self.flow(element)
        elif element.tag == "sect1":
            self.heading(plain(element.find("title")))
            for child in element.iterfind("para"):
                self.flow(child)
        elif element.tag == "programlisting":
            self.code([escape(plain(line)) for line in element])
        elif element.tag == "verbatim":
            self.code(escape(element.text.rstrip()).split("\n"))
        else:
            self.list(element)

    def list(self, element):
        nested = self.paragraph != ".PP"
        self.lines += [".RS"] if nested else []
        for number, entry in enumerate(element, 1):
            mark = rf"\(bu 2" if element.tag == "itemizedlist" else f"{number}. 4"
            self.item([f".IP {mark}"], f'.IP "" {mark[-1]}', lambda entry=entry: self.flow(entry))
        self.lines += [".RE"] if nested else []


class Group:
    """A header, or a section of one."""

    def __init__(self, definition):
        self.id = definition.get("id")
        self.name = definition.findtext("compoundname")
        self.title = definition.findtext("title")
        self.definition = definition
        self.parent = None
        self.entries = []

    def is_told(self):
        """Whether the section says something that holds for all in it, beyond its own first sentence."""
        return self.parent is not None and bool(plain(self.definition.find("detaileddescription")).strip())


class Entry:
    """What has a page of its own: a member of a group, or a record."""

    def __init__(self, definition, group):
        self.definition = definition
        self.group = group
        self.kind = definition.get("kind")
        self.values = definition.findall("enumvalue")
        self.names = [definition.findtext("name") or definition.findtext("compoundname")]
        if self.values and not re.match(r"\w", self.names[0]):
            self.names = [value.findtext("name") for value in self.values]
        self.name = self.names[0]
        self.text = definition
        if len(self.values) == 1 and not plain(definition.find("briefdescription")).strip():
            self.text, self.values = self.values[0], []
        location = definition.find("location").get("file")
        self.header = location if location.startswith("devfacts/") else "devfacts/" + location


def paragraphs(definition):
    """The brief description, which is the beginning of the first paragraph, and the detailed one."""
    brief, detailed = definition.findall("briefdescription/para"), definition.findall("detaileddescription/*")
    if not brief or not detailed or not (detailed[0].text or "").strip():
        return brief + detailed
    start = ElementTree.Element("span")
    start.text, start.tail = brief[0].text, detailed[0].text
    start.extend(brief[0])
    joined = ElementTree.Element("para")
    joined.append(start)
    joined.extend(detailed[0])
    return [joined] + detailed[1:]


def parts(definition):
    """The titled parts of a description, each a list of elements."""
    found = collections.defaultdict(list)
    for paragraph in paragraphs(definition):
        rest = ElementTree.Element(paragraph.tag)
        rest.text = paragraph.text
        for child in paragraph:
            if child.tag not in TITLED:
                rest.append(child)
                continue
            title = {"return": "Return value", "see": "See also", None: "Arguments"}.get(child.get("kind"))
            if child.tag == "parameterlist":
                title = "Arguments"
            title = title or child.findtext("title") or child.get("kind").capitalize()
            found[PLURALS.get(title, title)].append(child)
        found["Description"].append(rest if paragraph.tag == "para" else paragraph)
    return found


def brief_of(definition):
    """What `whatis` says: the first sentence without its end, of a long one the part before a colon or semicolon."""
    words = re.sub(r"[ \n]+", " ", plain(definition.find("briefdescription"))).strip(" ")
    if not words:
        sys.exit(f"manual.py: no description of {definition.findtext('name') or definition.findtext('compoundname')}")
    words = re.sub(r"[.:]$", "", re.split(r"(?<=\w\w)[.] (?=[A-Z])", words)[0])
    for end in re.finditer("[:;] ", words):
        if len(words) > 75 and words.count('"', 0, end.start()) % 2 == 0:
            words = words[:end.start()]
            break
    return words if re.match(r"[A-Z]([A-Z0-9]|\w*[_(])", words) else words[0].lower() + words[1:]


class Manual:
    def __init__(self, source, target, version):
        self.target = target
        self.version = version
        self.groups = {}
        self.entries = []
        self.page_of = {}
        self.constants = {}
        self.users = collections.defaultdict(set)
        compounds = [ElementTree.parse(file).find("compounddef") for file in sorted(source.glob("*.xml"))]
        self.compounds = {compound.get("id"): compound for compound in compounds if compound is not None}
        self.read_groups()

    def read_groups(self):
        for compound in self.compounds.values():
            if compound.get("kind") == "group":
                self.groups[compound.get("id")] = Group(compound)
        for group in self.groups.values():
            for inner in group.definition.iterfind("innergroup"):
                self.groups[inner.get("refid")].parent = group
        for group in self.groups.values():
            head = group.parent or group
            self.page_of[group.id] = f"devfacts_{head.name}"
            members = group.definition.findall("sectiondef/memberdef")
            records = [self.compounds[inner.get("refid")] for inner in group.definition.iterfind("innerclass")]
            for definition in sorted(members + records, key=lambda each: int(each.find("location").get("line"))):
                self.add(Entry(definition, group))

    def add(self, entry):
        if entry.kind == "define" and not plain(entry.text.find("briefdescription")).strip():
            return  # a macro of the header's own
        entry.group.entries.append(entry)
        if entry.kind == "define" and entry.group.name == "api":
            return
        self.entries.append(entry)
        for element in entry.definition.iter():
            if element.get("id"):
                self.page_of[element.get("id")] = entry.name
        self.constants |= {name: entry.name for name in entry.names if name.isupper()}

    def write(self):
        for entry in self.entries:
            for reference in entry.definition.iterfind(".//type//ref"):
                self.users[self.page_of[reference.get("refid")]].add(entry.name)
        for entry in self.entries:
            self.write_entry(entry)
        heads = [group for group in self.groups.values() if not group.parent]
        for group in heads:
            self.write_head(group)
        self.write_overview(heads)

    def save(self, page, name, last=()):
        page.heading("See also")
        others = sorted(page.references - {name} - set(last)) + list(last)
        page.text(",\n".join(rf"\fB{escape(other)}\fR({SECTION})" for other in others))
        (self.target / f"{name}.{SECTION}").write_text("\n".join(page.lines) + "\n", encoding="ascii")

    def write_entry(self, entry):
        page = Page(self, entry.name, entry.names, brief_of(entry.text), self.version)
        found = parts(entry.text)
        page.arguments = {plain(name) for name in entry.definition.iterfind(".//parametername")}
        self.synopsis(page, entry)
        for title in ORDER + sorted(set(found) - set(ORDER) - {"Examples", "See also"}):
            self.part(page, title, found[title], entry)
        self.context(page, entry)
        self.part(page, "Examples", found["Examples"], entry)
        for element in found["See also"]:
            page.inline(element.find("para"))
        head = entry.group.parent or entry.group
        self.save(page, entry.name, [self.page_of[head.id]])

    def part(self, page, title, elements, entry):
        rows = {"Fields": entry.definition.findall("sectiondef/memberdef"), "Values": entry.values}.get(title, [])
        rows += [item for element in elements if element.tag == "parameterlist" for item in element]
        texts = [element for element in elements if element.tag != "parameterlist" and plain(element).strip()]
        if not rows and not texts:
            return
        page.heading(title)
        for text in texts:
            for block in [text] if text.tag != "simplesect" else text.iterfind("para"):
                page.block(block)
        if title == "Description":
            head = f"{bold(self.page_of[entry.group.id])}({SECTION})"
            page.text(f"{bold(entry.group.title.upper())} below and {head} also apply." if entry.group.is_told() else f"{head} also applies.")
        for row in rows:
            self.row(page, row)

    def row(self, page, row):
        """A field, a value or an argument, and what is said of it."""
        if row.tag == "parameteritem":
            names = ", ".join(rf"\fI{escape(plain(name))}\fR" for name in row.iterfind("parameternamelist/parametername"))
            page.tagged(names, lambda: [page.block(each) for each in row.find("parameterdescription")])
            return
        tag = declaration(plain(row.find("type")), row.findtext("name"), row.findtext("argsstring") or "") \
            if row.tag == "memberdef" else f"{row.findtext('name')} {row.findtext('initializer') or ''}"
        page.tagged(bold(tag.strip()), lambda: [page.block(each) for each in paragraphs(row)])

    def context(self, page, entry):
        """What the entry's group says of all that is in it."""
        if not entry.group.is_told():
            return
        page.heading(entry.group.title)
        references = set(page.references)
        for text in parts(entry.group.definition)["Description"]:
            page.block(text)
        page.references = references  # the header's page has these

    def synopsis(self, page, entry):
        page.heading("Synopsis")
        page.lines += [".nf", bold(f"#include <{entry.header}>"), ".sp"]
        page.lines += self.declared(page, entry) + [".sp", bold(BUILD_LINE), ".fi"]
        for reference in entry.definition.iterfind(".//type//ref"):
            page.reference(reference)
        page.references |= self.users[entry.name]

    def declared(self, page, entry):
        definition = entry.definition
        kind, rest = plain(definition.find("type")) if definition.find("type") is not None else "", definition.findtext("argsstring") or ""
        if entry.kind == "function":
            return self.prototype(page, definition, kind)
        if entry.kind == "typedef":
            return [bold(f"typedef {declaration(kind, entry.name, rest)};")]
        if entry.kind == "variable":
            return [bold(f"extern {declaration(kind, entry.name, rest)};")]
        if entry.kind == "define":
            parameters = ", ".join(plain(name) for name in definition.iterfind("param/defname"))
            return [bold(f"#define {entry.name}{f'({parameters})' if parameters else ''} {plain(definition.find('initializer'))}")]
        if entry.kind == "enum":
            values = [f"    {value.findtext('name')} {value.findtext('initializer') or ''}".rstrip() + "," 
                      for value in definition.iterfind("enumvalue")]
            return [bold(line) for line in ["enum {", *values, "};"]]
        fields = [declaration(plain(field.find("type")), field.findtext("name"), field.findtext("argsstring") or "")
                  for field in definition.iterfind("sectiondef/memberdef")]
        return [bold(line) for line in [f"typedef struct {entry.name} {{", *[f"    {field};" for field in fields], f"}} {entry.name};"]]

    def prototype(self, page, definition, kind):
        """The declaration of a function, in lines of at most 70 characters, its arguments in italics."""
        start = declaration(("static inline " if definition.get("static") == "yes" else "") + kind.removeprefix("static "),
                            definition.findtext("name"), "(")
        lines, column = [bold(start)], len(start)
        parameters = definition.findall("param")
        for number, parameter in enumerate(parameters, 1):
            name, array = parameter.findtext("declname") or "", parameter.findtext("array") or ""
            end = array + (");" if number == len(parameters) else ", ")
            type_and_blank = declaration(plain(parameter.find("type")), name).removesuffix(name)
            width = len(type_and_blank + name + end.rstrip())
            if column + width > 70 and number > 1:
                lines.append(" " * min(len(start), 12))
                column = len(lines[-1])
            lines[-1] += bold(type_and_blank) + (rf"\fI{escape(name)}\fR" if name else "") + bold(end)
            column += width + 1
        return lines

    def write_head(self, group):
        name = self.page_of[group.id]
        page = Page(self, name, [name], brief_of(group.definition), self.version)
        page.heading("Synopsis")
        headers = {entry.header for inner in self.sections(group) for entry in inner.entries}
        page.lines += [".nf", *[bold(f"#include <{header}>") for header in sorted(headers)], ".sp", bold(BUILD_LINE), ".fi"]
        for inner in self.sections(group):
            page.heading("Description" if inner is group else inner.title)
            for text in parts(inner.definition)["Description"]:
                page.block(text)
            for entry in inner.entries:
                page.tagged(bold(entry.name) + (f"({SECTION})" if entry in self.entries else ""), lambda entry=entry: page.text(escape(brief_of(entry.text))))
        self.save(page, name, ["devfacts"])

    def sections(self, group):
        return [group] + [self.groups[inner.get("refid")] for inner in group.definition.iterfind("innergroup")]

    def write_overview(self, heads):
        definition = self.compounds["indexpage"]
        page = Page(self, "devfacts", ["devfacts"], plain(definition.find("title")), self.version)
        page.heading("Description")
        for paragraph in definition.find("detaileddescription"):
            page.block(paragraph)
        self.save(page, "devfacts", [self.page_of[group.id] for group in heads])


if __name__ == "__main__":
    pages = pathlib.Path(sys.argv[2])
    pages.mkdir(parents=True, exist_ok=True)
    Manual(pathlib.Path(sys.argv[1]), pages, sys.argv[3]).write()
