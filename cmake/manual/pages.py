"""Makes the manual pages from the XML that Doxygen makes of the public headers: a page for each function, object, record, type and
enumeration, one for each header, devfacts_NAME, and one for them all, devfacts. pages.py XML_DIR PAGES_DIR VERSION"""
import pathlib
import re
import sys

from page import SECTION, Page, bold, escape, italic, link, plain
from reference import Reference, brief_of, paragraphs, parts

BUILD_LINE = "cc program.c $(pkg-config --cflags --libs devfacts)"
FIRST_TITLES = ["Description", "Fields", "Values", "Arguments", "Return value", "Failures", "State", "Cost"]
LAST_TITLES = ["Example", "See also"]


def declaration(kind, name, rest=""):
    """`int x`, `char *x`, `int (*x)(void)`: as one writes them."""
    kind = re.sub(r"(?<=\w)\(\*", " (*", kind.strip())
    return f"{kind}{'' if kind.endswith('*') or not name else ' '}{name}{rest}".strip()


def declared(member):
    return declaration(plain(member.find("type")), member.findtext("name"), member.findtext("argsstring") or "")


def value_of(value):
    return f"{value.findtext('name')} {value.findtext('initializer') or ''}".strip()


def prototype(definition):
    """A function's declaration in lines of at most 70 characters, its arguments in italics."""
    kind = plain(definition.find("type")).removeprefix("static ")
    start = declaration(("static inline " if definition.get("static") == "yes" else "") + kind, definition.findtext("name"), "(")
    lines, column = [bold(start)], len(start)
    parameters = definition.findall("param")
    for number, parameter in enumerate(parameters, 1):
        name = parameter.findtext("declname") or ""
        before = declaration(plain(parameter.find("type")), name).removesuffix(name)
        after = (parameter.findtext("array") or "") + (");" if number == len(parameters) else ", ")
        width = len(before + name + after.rstrip())
        if column + width > 70 and number > 1:
            lines.append(" " * 12)
            column = 12
        lines[-1] += bold(before) + (italic(name) if name else "") + bold(after)
        column += width + 1
    return lines


def define(definition):
    names = ", ".join(plain(name) for name in definition.iterfind("param/defname"))
    return f"#define {definition.findtext('name')}{f'({names})' if names else ''} {plain(definition.find('initializer'))}"


def synopsis(entry):
    """The declaration of an entry as escaped lines."""
    if entry.kind == "function":
        return prototype(entry.definition)
    lines = {
        "typedef": lambda: [f"typedef {declared(entry.definition)};"],
        "variable": lambda: [f"extern {declared(entry.definition)};"],
        "define": lambda: [define(entry.definition)],
        "enum": lambda: ["enum {", *[f"    {value_of(value)}," for value in entry.values], "};"],
        "struct": lambda: [f"typedef struct {entry.name} {{", *[f"    {declared(field)};" for field in entry.fields], f"}} {entry.name};"],
    }
    return [bold(line) for line in lines[entry.kind]()]


class Manual:
    def __init__(self, reference, folder, version):
        self.reference = reference
        self.folder = folder
        self.version = version

    def write(self):
        for entry in self.reference.entries:
            self.write_entry(entry)
        for head in self.reference.heads():
            self.write_head(head)
        self.write_overview()

    def save(self, page, name, last):
        """Ends a page with the names of others and writes it."""
        page.heading("See also")
        page.text(", ".join(link(other) for other in sorted(page.named - {name, *last}) + last))
        (self.folder / f"{name}.{SECTION}").write_text("\n".join(page.lines) + "\n", encoding="ascii")

    def write_entry(self, entry):
        page = Page(self.reference, entry.name, entry.names, brief_of(entry.text), self.version)
        page.arguments = {plain(name) for name in entry.definition.iterfind(".//parametername")}
        page.heading("Synopsis")
        page.declare([bold(f"#include <{entry.header}>"), ".sp", *synopsis(entry), ".sp", bold(BUILD_LINE)])
        found = parts(entry.text)
        others = sorted(set(found) - set(FIRST_TITLES) - set(LAST_TITLES))
        for title in FIRST_TITLES + others:
            self.write_part(page, title, found[title], entry)
        self.write_section_text(page, entry.group)
        self.write_part(page, "Examples", found["Example"], entry)
        self.name_others(page, entry, found["See also"])
        self.save(page, entry.name, [self.reference.page_of[entry.group.id]])
        for name in entry.names[1:]:
            (self.folder / f"{name}.{SECTION}").symlink_to(f"{entry.name}.{SECTION}")

    def name_others(self, page, entry, see):
        for type_name in entry.definition.iterfind(".//type//ref"):
            page.name(type_name)
        for part in see:
            page.inline(part.find("para"))
        page.named |= self.reference.users[entry.name]

    def write_part(self, page, title, elements, entry):
        rows = {"Fields": entry.fields, "Values": entry.values if entry.text is entry.definition else []}.get(title, [])
        rows = rows + [row for element in elements if element.tag == "parameterlist" for row in element]
        texts = [text for element in elements if element.tag != "parameterlist"
                 for text in (element.iterfind("para") if element.tag == "simplesect" else [element])]
        if not rows and not texts:
            return
        page.heading(title)
        page.blocks(texts)
        if title == "Description":
            self.write_what_applies(page, entry.group)
        for row in rows:
            self.write_row(page, row)

    def write_what_applies(self, page, group):
        head = link(self.reference.page_of[group.id])
        page.text(f"{bold(group.title.upper())} below and {head} also apply." if group.is_told() else f"{head} also applies.")

    def write_row(self, page, row):
        """A field, a value or an argument, and what is said of it."""
        if row.tag == "parameteritem":
            tag = ", ".join(italic(plain(name)) for name in row.iterfind("parameternamelist/parametername"))
            texts = row.find("parameterdescription")
        else:
            tag = bold(declared(row) if row.tag == "memberdef" else value_of(row))
            texts = paragraphs(row)
        page.tagged(tag, lambda: page.blocks(texts))

    def write_section_text(self, page, group):
        """What the section of the header says of all that is in it. The header's page names what that names."""
        if group.is_told():
            named = set(page.named)
            self.write_group_text(page, group, group.title)
            page.named = named

    def write_group_text(self, page, group, title):
        page.heading(title)
        for name, elements in parts(group.definition).items():
            if name != "Description":
                page.text(rf"\fB{escape(name)}\fR")
            for element in elements:
                page.blocks(element.iterfind("para") if element.tag == "simplesect" else [element])

    def write_head(self, head):
        name = self.reference.page_of[head.id]
        page = Page(self.reference, name, [name], brief_of(head.definition), self.version)
        sections = [head] + self.reference.sections(head)
        page.heading("Synopsis")
        headers = {entry.header for section in sections for entry in section.entries}
        page.declare([*[bold(f"#include <{header}>") for header in sorted(headers)], ".sp", bold(BUILD_LINE)])
        for section in sections:
            self.write_group_text(page, section, "Description" if section is head else section.title)
            for entry in section.entries:
                tag = link(entry.name) if entry.has_page() else bold(entry.name)
                page.tagged(tag, lambda entry=entry: page.text(escape(brief_of(entry.text))))
        self.save(page, name, ["devfacts"])

    def write_overview(self):
        definition = self.reference.compounds["indexpage"]
        page = Page(self.reference, "devfacts", ["devfacts"], plain(definition.find("title")), self.version)
        page.heading("Description")
        page.blocks(definition.find("detaileddescription"))
        self.save(page, "devfacts", [self.reference.page_of[head.id] for head in self.reference.heads()])


if __name__ == "__main__":
    target = pathlib.Path(sys.argv[2])
    target.mkdir(parents=True, exist_ok=True)
    Manual(Reference(pathlib.Path(sys.argv[1])), target, sys.argv[3]).write()
