"""What Doxygen's XML says of the public headers."""
import collections
import re
import sys
import xml.etree.ElementTree as ElementTree

from page import plain


class Group:
    """A header, or a section of one."""

    def __init__(self, definition):
        self.definition = definition
        self.id = definition.get("id")
        self.name = definition.findtext("compoundname")
        self.title = definition.findtext("title")
        self.parent = None
        self.entries = []

    def head(self):
        return self.parent or self

    def is_told(self):
        """Whether a section says something that holds for all in it, beyond its own first sentence."""
        return self.parent is not None and bool(plain(self.definition.find("detaileddescription")).strip())


class Entry:
    """What is declared in a group. An enumeration without a name has those of its values."""

    def __init__(self, definition, group):
        self.definition = definition
        self.group = group
        self.kind = definition.get("kind")
        self.values = definition.findall("enumvalue")
        self.fields = definition.findall("sectiondef/memberdef")
        name = definition.findtext("name") or definition.findtext("compoundname")
        self.names = [name] if re.match(r"\w", name) else [value.findtext("name") for value in self.values]
        self.name = self.names[0]
        # One value that says it all.
        alone = len(self.values) == 1 and not has_brief(definition)
        self.text = self.values[0] if alone else definition
        self.header = "devfacts/" + definition.find("location").get("file").removeprefix("devfacts/")

    def has_page(self):
        """The macros of api.h are told on the page of the header."""
        return self.kind != "define" or self.group.name != "api"


def has_brief(definition):
    return bool(plain(definition.find("briefdescription")).strip())


def paragraphs(definition):
    """The whole description. Doxygen's brief one is the beginning of its first paragraph."""
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


def title_of(part):
    known = {"return": "Return value", "see": "See also", "param": "Arguments"}
    return known.get(part.get("kind")) or part.findtext("title") or part.get("kind").capitalize()


def parts(definition):
    """The description by titles, a list of elements each; what has no title is the description proper."""
    found = collections.defaultdict(list)
    for paragraph in paragraphs(definition):
        rest = ElementTree.Element(paragraph.tag)
        rest.text = paragraph.text
        for child in paragraph:
            titled = child.tag in ("simplesect", "parameterlist")
            (found[title_of(child)] if titled else rest).append(child)
        found["Description"].append(rest)
    return found


def brief_of(definition):
    """What `whatis` says: the first sentence without its end; of a long one what is before a colon or semicolon."""
    words = re.sub(r"[ \n]+", " ", plain(definition.find("briefdescription"))).strip(" ")
    if not words:
        sys.exit(f"manual: no description of {definition.findtext('name') or definition.findtext('compoundname')}")
    words = re.sub(r"[.:]$", "", re.split(r"(?<=\w\w)[.] (?=[A-Z])", words)[0])
    ends = [end.start() for end in re.finditer("[:;] ", words) if words.count('"', 0, end.start()) % 2 == 0]
    if len(words) > 75 and ends:
        words = words[:ends[0]]
    is_name = re.match(r"[A-Z]([A-Z0-9]|\w*[_(])", words)
    return words if is_name else words[0].lower() + words[1:]


class Reference:
    """The groups and all that is declared in them, and which page tells of what."""

    def __init__(self, folder):
        found = [ElementTree.parse(file).find("compounddef") for file in sorted(folder.glob("*.xml"))]
        self.compounds = {compound.get("id"): compound for compound in found if compound is not None}
        self.groups = {id: Group(each) for id, each in self.compounds.items() if each.get("kind") == "group"}
        self.entries = []
        self.page_of = {}
        self.constants = {}
        self.users = collections.defaultdict(set)
        for group in self.groups.values():
            for inner in self.sections(group):
                inner.parent = group
        for group in self.groups.values():
            self.read(group)
        for entry in self.entries:
            for type_name in entry.definition.iterfind(".//type//ref"):
                self.users[self.page_of[type_name.get("refid")]].add(entry.name)

    def sections(self, group):
        return [self.groups[inner.get("refid")] for inner in group.definition.iterfind("innergroup")]

    def heads(self):
        return [group for group in self.groups.values() if not group.parent]

    def read(self, group):
        self.page_of[group.id] = f"devfacts_{group.head().name}"
        records = [self.compounds[inner.get("refid")] for inner in group.definition.iterfind("innerclass")]
        for definition in sorted(group.definition.findall("sectiondef/memberdef") + records,
                                 key=lambda each: int(each.find("location").get("line"))):
            if definition.get("kind") != "define" or has_brief(definition):  # others are the header's own
                self.add(Entry(definition, group))

    def add(self, entry):
        entry.group.entries.append(entry)
        if not entry.has_page():
            return
        self.entries.append(entry)
        self.page_of |= {element.get("id"): entry.name for element in entry.definition.iter() if element.get("id")}
        self.constants |= {name: entry.name for name in entry.names if name.isupper()}
