"""The breaks that a machine can make in src: each is a place in a file and what is put there instead."""
import os
import re
from collections import namedtuple

# kind: a word; at, length: the place in the file; new: the text put there.
Break = namedtuple("Break", "file kind at length new")

COMPARISONS = {"==": "!=", "!=": "==", "<=": "<", ">=": ">", " < ": " <= ", " > ": " >= "}
LEVELS = {"LOG_INFO": "LOG_WARNING", "LOG_WARNING": "LOG_ERROR", "LOG_ERROR": "LOG_INFO"}

CODE, TEXT, NOTE = "c", "t", "n"
# Comments, raw texts, texts, characters, what is for the preprocessor.
NOT_CODE = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"\((?:.*?)\)"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])\'|^[ \t]*#(?:\\\n|[^\n])*',
    re.DOTALL | re.MULTILINE)
STATEMENT = re.compile(r"^[ \t]+(?!return|const |constexpr|auto |static|using |typedef|friend|case |default|else|if |"
                       r"struct|class|public|private|protected|virtual|explicit|template|namespace|extern|delete )"
                       r"[A-Za-z_(*][^;{}]*;[ \t]*$", re.MULTILINE)
DECLARATION = re.compile(r"^\s*[\w:<>,*& ]+[ *&]\w+(\{.*\}|\(.*\))?( = .*)?;\s*$", re.DOTALL)


def marked(text):
    """For each character whether it is code, part of a text, or nothing that runs."""
    marks = [CODE] * len(text)
    for match in NOT_CODE.finditer(text):
        is_text = match.group()[0] in "\"'R"
        marks[match.start():match.end()] = (TEXT if is_text else NOTE) * (match.end() - match.start())
    for match in re.finditer(r"LOG_DEBUG\([^;]*;|static_assert\([^;]*;|Q_\w+\([^;\n]*", text):
        marks[match.start():match.end()] = NOTE * (match.end() - match.start())
    return "".join(marks)


def closing(text, marks, start):
    """Where the bracket at `start` is closed."""
    depth = 0
    for at in range(start, len(text)):
        if marks[at] == CODE and text[at] in "([{":
            depth += 1
        elif marks[at] == CODE and text[at] in ")]}":
            depth -= 1
            if depth == 0:
                return at
    return -1


def of_file(name, text):
    marks = marked(text)
    found = []

    def add(kind, at, length, new):
        found.append(Break(name, kind, at, length, new))

    def each(pattern):
        for match in re.finditer(pattern, text):
            if set(marks[match.start():match.end()]) == {CODE}:
                yield match

    for match in each(r"(?<![<>=!+\-*/&|])(==|!=|<=|>=)(?!=)| [<>] "):
        if match.group() in COMPARISONS:
            add("comparison", match.start(), len(match.group()), COMPARISONS[match.group()])
    for match in each(r"&&|\|\|"):
        # Not a reference to what may be moved.
        if text[match.start() - 1] == " " or match.group() == "||":
            add("logic", match.start(), 2, "||" if match.group() == "&&" else "&&")
    for match in each(r"!(?=[\w(*])"):
        add("negation", match.start(), 1, "")
    for match in each(r"\b(?:if|while) \("):
        start = match.end() - 1
        end = closing(text, marks, start)
        if end > 0:
            inside = text[start + 1:end]
            if ";" not in inside and " = " not in inside:
                add("condition turned", start + 1, end - start - 1, f"!({inside})")
                add("condition false", start + 1, end - start - 1, "false")
                if match.group().startswith("if"):
                    add("condition true", start + 1, end - start - 1, "true")
    for match in each(r"(?<![\w.\"'])(?:0x[0-9A-Fa-f]+|\d+)(?=[uU]?\b)(?![.\w]*\.)"):
        digits = match.group()
        base = 16 if digits.startswith("0x") else 8 if len(digits) > 1 and digits[0] == "0" else 10
        if base == 10 or all(c in "01234567" for c in digits) or base == 16:
            value = int(digits, base)
            up = hex(value + 1) if base == 16 else f"0{value + 1:o}" if base == 8 else str(value + 1)
            add("number up", match.start(), len(digits), up)
            if value > 1:
                down = hex(value - 1) if base == 16 else f"0{value - 1:o}" if base == 8 else str(value - 1)
                add("number down", match.start(), len(digits), down)
    for match in each(r" [+\-*/] "):
        swap = {"+": "-", "-": "+", "*": "/", "/": "*"}[match.group()[1]]
        add("arithmetic", match.start() + 1, 1, swap)
    for match in each(r"[+-]="):
        add("assignment", match.start(), 2, "-=" if match.group() == "+=" else "+=")
    for match in each(r"\+\+|--"):
        add("step", match.start(), 2, "--" if match.group() == "++" else "++")
    for match in each(r" [&|] "):
        add("bits", match.start() + 1, 1, "|" if match.group()[1] == "&" else "&")
    for match in each(r"\b(?:true|false)\b"):
        add("truth", match.start(), len(match.group()), "false" if match.group() == "true" else "true")
    for match in each(r"\bnullptr\b(?=\))"):
        pass
    for match in NOT_CODE.finditer(text):
        piece = match.group()
        if marks[match.start()] != TEXT:
            continue
        if piece[0] == '"' and len(piece) > 2:
            add("text changed", match.start() + 1, 0, "x")
            add("text emptied", match.start() + 1, len(piece) - 2, "")
        elif piece[0] == '"':
            add("text filled", match.start() + 1, 0, "x")
        elif piece[0] == "R":
            add("text changed", match.start() + 3, 0, "x")
            add("text emptied", match.start() + 3, len(piece) - 5, "")
        elif piece[1] != "\\":
            add("character", match.start() + 1, 1, "#" if piece[1] != "#" else "x")
    for match in STATEMENT.finditer(text):
        start = match.start() + len(match.group()) - len(match.group().lstrip())
        line = text[start:match.end()]
        if marks[start] == CODE and not DECLARATION.match(line) and not re.search("LOG_DEBUG|= delete;", line):
            kind = "jump removed" if re.match(r"break;|continue;", line) else \
                "signal removed" if line.startswith("emit ") else \
                "log line removed" if line.startswith("LOG_") else \
                "connection removed" if line.startswith(("connect(", "disconnect(")) else "statement removed"
            add(kind, start, match.end() - start, "break;" if line == "continue;" else ";")
    for match in each(r"\breturn [^;]+;"):
        value = match.group()[7:-1]
        other = {"true": "false", "false": "true", "0": "-1", "-1": "0"}.get(value)
        if other is None and value.endswith("ACTION_SUCCESS"):
            other = "-1"  # It is 0 itself.
        if other is None:
            # Nothing is what these give already.
            other = "{}" if not value.startswith("{") and value not in (
                '""', "QString()", "nullptr", "std::nullopt") else None
        if other is not None:
            add("return", match.start() + 7, len(value), other)
    for match in each(r"[\w>]\("):
        start = match.end() - 1
        end = closing(text, marks, start)
        # The order of these does not matter, or only for the sign of what comes out.
        if re.search(r"\b(qMin|qMax|min|max|strcmp)$", text[:start]):
            continue
        pieces = text[start + 1:end].split(", ")
        if end > 0 and len(pieces) == 2 and all(re.fullmatch(r"[\w.:>\-*&\"]+(\(\))?", p) for p in pieces) and \
                pieces[0] != pieces[1]:
            add("arguments swapped", start + 1, end - start - 1, ", ".join(reversed(pieces)))
    for match in each(r"\bLOG_(?:INFO|WARNING|ERROR)\b"):
        add("level", match.start(), len(match.group()), LEVELS[match.group()])
    return [b for b in found if b.new != text[b.at:b.at + b.length]]


def all_breaks(root):
    found = []
    for folder, _, names in sorted(os.walk(os.path.join(root, "src"))):
        for name in sorted(names):
            if name.endswith((".cpp", ".h")):
                path = os.path.join(folder, name)
                with open(path, encoding="utf-8") as file:
                    found += of_file(os.path.relpath(path, root), file.read())
    return found


def shown(text, one):
    """The lines that the break touches, before and after it."""
    start = text.rfind("\n", 0, one.at) + 1
    end = text.find("\n", one.at + one.length)
    after = text[start:one.at] + one.new + text[one.at + one.length:end]
    return " ".join(text[start:end].split()), " ".join(after.split())


# The classes whose tests should notice first.
TESTS = {
    "platform/BoundedFunctions": "TestBoundedFunctions",
    "platform/DirOperator": "TestDirOperator|TestConstant",
    "platform/ErrorInfo": "TestErrorInfo",
    "platform/FileOperator": "TestFileOperator",
    "platform/Logger": "TestLogger",
    "platform/RandomCode": "TestRandomCode",
    "platform/Singleton": "TestSingleton",
    "platform/Utils": "TestUtils|TestDaemonBus",
    "platform/UtilsText": "TestUtils",
    "config/Configure": "TestConfigure",
    "config/Constant": "TestConstant",
    "config/IniParser": "TestIniParser",
    "statuschannel/AppMessage": "TestAppMessage",
    "statuschannel/ConnServer": "TestConnServer",
    "statuschannel/ConnClient": "TestConnClient",
    "supervision/AppManager": "TestAppManager",
    "supervision/BaseApp": "TestBaseApp|TestAppManager",
    "supervision/PausedNotifiers": "TestPausedNotifiers|TestAppManager",
    "supervision/TandraApp": "TestTandraApp",
    "entry/SingleApplication": "TestSingleApplication",
    "entry/RawxWindowOpt": "TestSingleApplication",
    "entry/StartEnvironment": "TestStartEnvironment",
    "entry/VeloMain": "TestCommandLine|TestStart|TestEnd",
    "shell/AboutWin": "TestAboutWin",
    "shell/CardShadow": "TestShadow|TestVeloMessageBox",
    "shell/CardWindow": "TestVeloWin|TestShadow|TestVeloMessageBox",
    "shell/DialogStyle": "TestVeloMessageBox|TestExitWin",
    "shell/ExitWin": "TestExitWin|TestVeloWin",
    "shell/ProtocolWin": "TestProtocolWin",
    "shell/SerProEdit": "TestSerProEdit",
    "shell/Shadow": "TestShadow|TestScarceMemory",
    "shell/Typeface": "TestTypeface|TestProtocolWin",
    "shell/VeloMessageBox": "TestVeloMessageBox",
    "shell/VeloWin": "TestVeloWin|TestScarceMemory",
    "multiscreen/MultiScreen": "TestCastControl|TestDeviceName|TestSettingsView|TestTrustedDevices|TestHelpPages|"
                               "TestMultiScreenPage",
    "multiscreen/StatusPicture": "TestWhiteGround",
    "multiscreen/WhiteGround": "TestWhiteGround",
}


def likely_tests(name):
    return TESTS.get(os.path.splitext(name)[0][len("src/"):], "")
