"""Where a source can be given a small fault, and what the fault is. Used by scripts/mutate.

A place is (kind, start, end, replacements): the characters from start to end become one of the
replacements. The sources are read as tokens, not understood: a fault may be one that the compiler
refuses."""

import re

KINDS = ("operator", "bound", "constant", "name", "statement", "row", "value", "text")

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
    |(?P<string>"(?:\\.|[^"\\\n])*")
    |(?P<char>'(?:\\[0-7]+|\\.|[^'\\\n])')
    |(?P<number>\b(?:0[xX][0-9a-fA-F]+|\d+)[uUlL]*\b)
    |(?P<word>[A-Za-z_]\w*)
    |(?P<mark><<=|>>=|->\*|\.\.\.|::|->|\+\+|--|&&|\|\||[=!<>+\-*/%&|^]=|<<|>>|\S)""",
    re.VERBOSE | re.DOTALL)

# What writes nothing by design, is checked by the compiler, or is not the program's own text.
SKIPPED = [re.compile(pattern, re.MULTILINE | re.DOTALL) for pattern in (
    r"^[ \t]*#[ \t]*(?:include|pragma|if|ifdef|ifndef|else|endif|undef)\b[^\n]*",
    r"^[ \t]*#[ \t]*define \w+(?:\([^)]*\))?",
    r"\bstatic_assert\(.*?\);",
    r"\btrace\(.*?\);",
    r"\[\[.*?\]\]",
    r"^(?:namespace|using|template)\b[^\n]*",
    r'"main->main processing [^"]*"',                            # a trace mark
    r"^consteval const char \*exits_as\(.*?^}|\bexits_as\(#NAME\)",  # the name in a trace mark
    r"\b(?:false|true),\s+rows_of",                              # whether a trace mark follows
)]

OPERATORS = {
    "==": ["!="], "!=": ["=="], "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="],
    ">=": [">", "<"], "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["+"], "/": ["*"],
    "|": ["&"], "&": ["|"], "<<": [">>"], "+=": ["-="], "-=": ["+="],
}
STEPS = {"++": "--", "--": "++"}
SIZES = re.compile(r"(?i)(?:^|_)(?:length|size|count|room|longest|available|needed|bars|first|last"
                   r"|listed|lowest_port|most_\w+|fields|digits|width)$")
NO_CALL = {"if", "while", "for", "switch", "sizeof", "return", "catch", "decltype", "alignas"}
# Asked for equality, or by nature the same both ways round.
SYMMETRIC = {"names_match", "strcmp", "strncmp", "strcasecmp", "strncasecmp", "memcmp"}
NO_STATEMENT = {"return", "if", "while", "for", "do", "switch", "case", "default", "else", "using",
                "static", "const", "constexpr", "consteval", "struct", "enum", "extern", "auto",
                "typedef", "template", "public", "private", "namespace", "goto"}
PAIRS = {"(": ")", "{": "}", "[": "]"}


class Token:
    def __init__(self, match):
        self.kind, self.text = match.lastgroup, match.group()
        self.start, self.end = match.span()


class Source:
    """The tokens of a C or C++ source, comments left out, with the partner of every bracket."""

    def __init__(self, text):
        self.text = text
        self.tokens = [Token(found) for found in TOKEN.finditer(text)]
        comments = [(token.start, token.end) for token in self.tokens if token.kind == "comment"]
        self.tokens = [token for token in self.tokens if token.kind != "comment"]
        self.skipped = comments + [found.span() for pattern in SKIPPED
                                   for found in pattern.finditer(text)]
        self.partner = {}
        open_brackets = []
        for index, token in enumerate(self.tokens):
            if token.text in PAIRS:
                open_brackets.append(index)
            elif token.text in PAIRS.values() and open_brackets:
                self.partner[open_brackets.pop()] = index

    def word(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def is_skipped(self, start, end):
        return any(start < last and first < end for first, last in self.skipped)

    def is_spaced(self, token):
        return self.text[token.start - 1].isspace() and self.text[token.end:token.end + 1].isspace()

    def elements(self, opening):
        """The token ranges between the commas of a bracket."""
        closing = self.partner[opening]
        ranges, first, index = [], opening + 1, opening + 1
        while index < closing:
            if self.tokens[index].text == ",":
                ranges.append((first, index))
                first = index + 1
            index = self.partner.get(index, index) + 1
        ranges.append((first, closing))
        return [(first, end) for first, end in ranges if first < end]

    def span(self, element):
        return self.tokens[element[0]].start, self.tokens[element[1] - 1].end


def operators(source):
    for index, token in enumerate(source.tokens):
        if token.text in OPERATORS and source.is_spaced(token):
            if source.word(index + 1) in (",", ")"):
                continue  # the reference of an unnamed parameter
            yield "operator", token.start, token.end, OPERATORS[token.text]
        elif token.text in STEPS:
            yield "operator", token.start, token.end, [STEPS[token.text]]
        elif token.text in ("!", "~"):
            yield "operator", token.start, token.end, [""]


def numbers(source):
    for index, token in enumerate(source.tokens):
        before, behind = source.word(index - 1), source.word(index + 1)
        if token.kind == "number":
            digits = token.text.rstrip("uUlL")
            value, suffix = int(digits, 0), token.text[len(digits):]
            near = [value + 1] + ([value - 1] if value > 0 else [])
            yield "bound", token.start, token.end, [f"{number}{suffix}" for number in near]
            far = [0, value + 10] if value > 1 else [1 - value]
            yield "constant", token.start, token.end, [f"{number}{suffix}" for number in far]
        elif token.kind == "word" and SIZES.search(token.text) and behind in (
                ")", ",", ";", "]", "<", ">", "<=", ">=", "==", "!=", "+", "-", "&&", "||") and (
                before in ("(", ",", "=", "<", ">", "<=", ">=", "==", "!=", "+", "-", "[", "return",
                           "->", ".", "&&", "||")):
            yield "bound", token.end, token.end, [" + 1", " - 1"]


def constants(source):
    for token in source.tokens:
        if token.text in ("true", "false"):
            yield "constant", token.start, token.end, ["false" if token.text == "true" else "true"]
        elif token.kind == "char":
            other = {"'\\0'": ["'\\n'"], "'\\n'": ["' '"]}.get(token.text)
            yield "constant", token.start, token.end, other or [f"'{other_character(token.text[1])}'"]


def names(source):
    """A named constant gives way to another of the same family."""
    known = sorted({token.text for token in source.tokens
                    if token.kind == "word" and re.fullmatch(r"[A-Z][A-Z0-9]*(?:_[A-Z0-9]+)+", token.text)})
    for index, token in enumerate(source.tokens):
        before, behind = source.word(index - 1), source.word(index + 1)
        is_defined = behind in ("=", "[") and before not in (".", "return", "(")
        if token.text not in known or is_defined:
            continue
        family, last = token.text.split("_")[0], token.text.split("_")[-1]
        others = [name for name in known if name != token.text and
                  (name.split("_")[0] == family or name.split("_")[-1] == last)]
        if others:
            yield "name", token.start, token.end, others


def statements(source):
    """A call, an assignment, a step or a jump that is not carried out."""
    for index, token in enumerate(source.tokens):
        if source.word(index - 1) not in (";", "{", "}"):
            continue
        if token.text in NO_STATEMENT or not (token.kind == "word" or token.text in ("*", "++", "(")):
            continue
        if source.word(index + 1) in ("*", "&", "<", ":") or (
                index + 1 < len(source.tokens) and source.tokens[index + 1].kind == "word"):
            continue  # a declaration or a label
        end = index
        while end < len(source.tokens) and source.word(end) not in (";", "}"):
            end = source.partner.get(end, end) + 1
        between = {source.word(inner) for inner in range(index, end)}
        is_declaration = "::" in between and "=" in between and source.word(index + 1) == "::"
        if source.word(end) != ";" or is_declaration or not (
                between & {"(", "=", "+=", "++"} or between <= {"break", "continue"}):
            continue
        start, last = token.start, source.tokens[end].end
        # Never carried out, but still seen by the compiler, which would refuse what is left unused.
        yield "statement", start, last, ["if (false) { " + source.text[start:last] + " }"]


def shape(source, element):
    """What a value looks like: only those that look alike are exchanged. None: never."""
    first, end = element
    words = source.tokens[first:end]
    kinds = {token.kind for token in words}
    if kinds == {"string"}:
        return "text"
    if words[-1].kind == "number" and len(words) <= 2:
        return "number"
    if words[-1].text in ("true", "false"):
        return "flag"
    if all(token.kind == "word" or token.text in ("->", ".", "::", "&") for token in words):
        return "name"
    return None


def value_of(source, element):
    """Behind the name of a designated initialiser."""
    first, end = element
    return (first + 3, end) if source.word(first) == "." and source.word(first + 2) == "=" else element


def exchanged(source, one, other):
    first, first_end = source.span(one)
    second, second_end = source.span(other)
    text = source.text
    return first, second_end, [text[second:second_end] + text[first_end:second] + text[first:first_end]]


def is_list(source, opening):
    before = source.word(opening - 1)
    if source.word(opening) == "(":
        return (source.tokens[opening - 1].kind == "word" and before not in NO_CALL) or before == ">"
    is_enumeration = "enum" in [source.word(index) for index in range(opening - 4, opening)]
    return before in ("=", ",", "{", "(", "return") or is_enumeration


def lists(source):
    """Rows that change places or are missing; neighbouring values and arguments that change places."""
    for opening in sorted(source.partner):
        if source.word(opening) not in "({" or not is_list(source, opening):
            continue
        elements = source.elements(opening)
        rows = [element for element in elements
                if source.word(element[0]) == "{" or
                (source.word(opening) == "{" and source.word(element[1] - 1) == ")")]
        if len(rows) > 1 and len(rows) == len(elements):
            for place, row in enumerate(rows):
                for other in {place + 1, place + len(rows) // 2}:
                    if other < len(rows):
                        yield ("row", *exchanged(source, row, rows[other]))
                end = source.tokens[rows[place + 1][0]].start if place + 1 < len(rows) else source.span(row)[1]
                yield "row", source.span(row)[0], end, [""]
            continue
        if source.word(opening - 1) in SYMMETRIC:
            continue
        for element, other in zip(elements, elements[1:]):
            one, two = value_of(source, element), value_of(source, other)
            alike = shape(source, one)
            if alike is not None and alike == shape(source, two):
                start, end, replacements = exchanged(source, one, two)
                if replacements[0] != source.text[start:end]:
                    yield "value", start, end, replacements


def other_character(character):
    if character.isdigit():
        return str((int(character) + 1) % 10)
    if character.isalpha():
        return character[:-1] + ("a" if character == "z" else "A" if character == "Z" else chr(ord(character) + 1))
    return "_" if character in " ." else "."


def texts(source):
    for token in source.tokens:
        if token.kind != "string":
            continue
        inside = token.text[1:-1]
        changed = []
        for part in re.finditer(r"\\[0-7]+|\\.|%[-0-9*.]*[a-zA-Z%]|.", inside):
            if len(part.group()) == 1:
                other = other_character(part.group())
            elif part.group() == "\\n":
                other = ""
            else:
                continue
            changed.append('"' + inside[:part.start()] + other + inside[part.end():] + '"')
        if changed:
            yield "text", token.start, token.end, changed


def definition_places(text):
    """Faults of the service definition: its fields, its names and its directives."""
    fields = list(re.finditer(r"^    char \*(\w+)[,;]\n", text, re.MULTILINE))
    for one, other in zip(fields, fields[1:]):
        if one.end() == other.start():
            swapped = (other.group(1) + text[one.end(1):other.start(1)] + one.group(1))
            yield "value", one.start(1), other.end(1), [swapped]
    for field in fields:
        yield "row", field.start(), field.end(), [""]
    words = [field.span(1) for field in fields]
    words += [found.span(1) for found in re.finditer(r"^//gsoap ns (.*)$", text, re.MULTILINE)]
    words += [found.span(1) for found in re.finditer(r"ns__service_(\w+)", text)]
    for start, end in words:
        word = text[start:end]
        yield "text", start, end, [word[:place] + other_character(character) + word[place + 1:]
                                   for place, character in enumerate(word)
                                   if character.isalnum()]


def places(path, text):
    """All places of one source."""
    if path.endswith(".gsoap"):
        return list(definition_places(text))
    source = Source(text)
    found = [place for finder in (operators, numbers, constants, names, statements, lists, texts)
             for place in finder(source)]
    return [place for place in found if not source.is_skipped(place[1], max(place[2], place[1] + 1))]


def choose(sources, count, random):
    """As many faults of every kind, as far as there are places: (path, kind, start, end, new text)."""
    by_kind = {kind: [] for kind in KINDS}
    for path, text in sorted(sources.items()):
        for place in places(path, text):
            by_kind[place[0]].append((path, *place))
    for kind in KINDS:
        random.shuffle(by_kind[kind])
    chosen = []
    while len(chosen) < count and any(by_kind.values()):
        for kind in KINDS:
            if by_kind[kind] and len(chosen) < count:
                path, _, start, end, replacements = by_kind[kind].pop()
                chosen.append((path, kind, start, end, random.choice(replacements)))
    random.shuffle(chosen)
    return chosen
