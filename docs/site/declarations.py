"""The declarations of the public headers, from Doxygen's XML, and the names of them that a text or a listing uses."""
import re
import xml.etree.ElementTree as xml


class Declarations:
    def __init__(self, folder):
        self.classes = {}  # name without namespace: refid
        self.bases = {}  # name: names
        self.members = {}  # name: {operation: refid of its first declaration}
        self.functions = {}  # name: refid
        self.headers = {}  # refid: path
        for file in sorted(folder.glob("*.xml")):
            compound = xml.parse(file).getroot().find("compounddef")
            if compound is not None and compound.get("kind") in ("class", "struct"):
                self.addClass(compound)
            elif compound is not None and compound.get("kind") == "file":
                self.headers[compound.get("id")] = compound.find("location").get("file")
            elif compound is not None and compound.get("kind") == "namespace":
                for member in compound.iter("memberdef"):
                    self.functions.setdefault(member.findtext("name"), member.get("id"))

    def addClass(self, compound):
        name = compound.findtext("compoundname").removeprefix("gqdb::")
        self.classes[name] = compound.get("id")
        self.bases[name] = [base.text.removeprefix("gqdb::") for base in compound.findall("basecompoundref")]
        operations = [member for member in compound.iter("memberdef") if member.get("kind") == "function"]
        self.members[name] = {}
        for member in operations:
            self.members[name].setdefault(member.findtext("name"), member.get("id"))

    def member(self, name, operation):
        """Returns the refid of a class's operation, its own or inherited, or None."""
        if operation in self.members.get(name, {}):
            return self.members[name][operation]
        for base in self.bases.get(name, []):
            if refid := self.member(base, operation):
                return refid
        return None

    def find(self, text, scopes):
        """Returns the refid of what a text in code letters names, or None: a class, CLASS::OPERATION, or an operation.

        If several classes have the operation, the first of `scopes` that names just one of them decides.
        """
        found = re.fullmatch(r"(?:gqdb::)?(?:(\w+)::)?(\w+)(?:\(.*\))?", text)
        if not found:
            return None
        owner, name = found.groups()
        if owner:
            return self.member(owner, name)
        if name in self.classes:
            return self.classes[name]
        if name in self.functions:
            return self.functions[name]
        owners = [each for each in self.members if name in self.members[each] and name != each]
        if len(owners) == 1 and len(name) > 4 and re.search(r"[A-Z0-9(]", text):
            return self.members[owners[0]][name]
        if not owners:
            return None
        for scope, decides in scopes:
            named = set(re.findall(r"\w+", scope)) & set(self.classes)
            refids = {refid for each in named if (refid := self.member(each, name))}
            if len(refids) == 1 or (refids and decides):
                return refids.pop() if len(refids) == 1 else None
        return None


class Program:
    """A program, whose listings are parts of it."""

    def __init__(self, text, declared):
        self.declared = declared
        self.local = dict(re.findall(r"\b(?:class|struct) (\w+)(?: final)? : public (?:gqdb::)?(\w+)", text))
        self.types = {}  # variable: class
        classes = "|".join([*declared.classes, *self.local])
        for name, variable in re.findall(rf"\b({classes})\b[\s&*>]+(\w+)\s*[;,(){{=:]", text):
            self.types[variable] = self.local.get(name, name)

    def names(self, listing):
        """Yields (name, number, refid) for each name of the library; its number counts the name in the listing."""
        code = re.sub(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|#include[^\n]*', lambda found: " " * len(found[0]), listing,
                      flags=re.S)
        tokens = re.findall(r"\w+|::|->|\S", code)
        counts = {}
        for i, token in enumerate(tokens):
            if not re.match(r"[A-Za-z_]", token):
                continue
            counts[token] = counts.get(token, 0) + 1
            refid = self.resolve(tokens, i)
            if refid:
                yield token, counts[token], refid

    def resolve(self, tokens, i):
        token = tokens[i]
        declared = self.declared
        if i > 1 and tokens[i - 1] in (".", "->", "::"):
            owner = tokens[i - 2]
            if owner == "gqdb":
                return declared.classes.get(token) or declared.functions.get(token)
            owner = self.types.get(owner) or self.local.get(owner) or owner
            return declared.member(owner, token)
        if token in declared.classes:
            return declared.classes[token]
        if i + 1 < len(tokens) and tokens[i + 1] == "(":
            for base in self.local.values():
                if refid := declared.member(base, token):
                    return refid
        return None
