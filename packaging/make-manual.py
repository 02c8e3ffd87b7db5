#!/usr/bin/env python3
"""Writes manual pages and shell completions from what states the facts: the public header, the
programs' own help, and docs/.

    make-manual.py FOLDER library HEADER
    make-manual.py FOLDER program PROGRAM
    make-manual.py FOLDER document PAGE.md NAME SECTION

Pages go to FOLDER/man/manSECTION, completions to FOLDER/bash, zsh and fish.
"""

import gzip
import os
import pathlib
import re
import subprocess
import sys

PURPOSE = {
    "zeltoport": "remote control of a navigator from the command line",
    "zelto-navigator": "stand-in navigator for the development of clients",
}
ENVIRONMENT = """\
ZELTO_DEVICE             the device's folder; else $XDG_DATA_HOME/zelto-device, else
                         ~/.local/share/zelto-device
ZELTO_NAVIGATOR_JOURNAL  zelto-navigator: the journal's file, as --journal
ZELTO_NAVIGATOR_VIEW     zelto-navigator: the port of its live page, as --view
ZELTO_TIME_SCALE         1 to 1000, divides every time-out and pause, for tests
ZELTO_SPIN_US            microseconds that a wait looks for its answer before it sleeps"""


def roff(text):
    """Text as it is, for a block without filling."""
    lines = text.replace("\\", "\\e").replace("-", "\\-").splitlines()
    return "\n".join("\\&" + line if line[:1] in (".", "'") else line for line in lines)


def write_page(folder, name, section, purpose, sections):
    save_page(folder, name, section, purpose,
              "".join(f".SH {title}\n.nf\n{roff(text)}\n.fi\n" for title, text in sections))


def save_page(folder, name, section, purpose, body):
    page = f'.TH {name} {section} "" ZeltoPORT ZeltoPORT\n'
    page += f".SH NAME\n{name} \\- {roff(purpose)}\n{body}"
    target = folder / "man" / f"man{section}"
    target.mkdir(parents=True, exist_ok=True)
    (target / f"{name}.{section}.gz").write_bytes(gzip.compress(page.encode(), 9, mtime=0))


def comment_text(comment):
    return re.sub(r"^ ?\* ?", "", comment.strip(), flags=re.M).strip()


INDENT = "\n" + " " * len("ZELTO_PORT_API ")  # of a prototype's second line in the header


def write_library(folder, header):
    text = header.read_text()
    overview = comment_text(re.search(r"/\*(.*?)\*/", text, re.S)[1])
    results = re.search(r"/\*((?:(?!\*/).)*)\*/\n(enum ZeltoNavPort_Result.*?};)", text, re.S)
    blocks = re.findall(r"/\*((?:(?!\*/).)*)\*/\n((?:ZELTO_PORT_API .*?\);\n)+)", text, re.S)
    calls = {}  # name: (prototype, what is said of it), once for each of its forms
    name = ""
    for comment, block in blocks:
        words = re.sub("^The same", f"As {name}(3),", comment_text(comment))
        for call in re.findall(r"ZELTO_PORT_API (.*?\);)", block, re.S):
            name = re.search(r"(\w+)\(", call)[1]
            calls.setdefault(name, []).append((call, words))
    write_page(folder, "ZeltoNavPort", 3, "remote control of a navigator application", [
        ("SYNOPSIS", "#include <zelto_port.h>\n\nLink with -lzelto_port."),
        ("DESCRIPTION", overview),
        ("RESULTS", comment_text(results[1]) + "\n\n" + results[2]),
        ("FUNCTIONS", "\n".join(calls)),
        ("SEE ALSO", "zeltoport(1), zelto-navigator(1)"),
    ])
    for name, forms in calls.items():
        prototypes, words = zip(*forms)
        purpose = re.split(r"[.:;]\s", words[0])[0]
        write_page(folder, name, 3, purpose[0].lower() + " ".join(purpose[1:].split()), [
            ("SYNOPSIS", "#include <zelto_port.h>\n\n" + "\n".join(prototypes).replace(INDENT, "\n")),
            ("DESCRIPTION", "\n\n".join(words)),
            ("SEE ALSO", "ZeltoNavPort(3): conventions, results, waits"),
        ])


def plain(text):
    """A line of a document without its marks: links become their words, code its text."""
    text = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", text)
    return roff(re.sub(r"`|\*\*|\\(?=\|)", "", text))


def table_row(line):
    """A row of a table: its first cell as a term, the others as its text; of a ruler nothing."""
    cells = [plain(cell.strip()) for cell in re.split(r"(?<!\\)\|", line.strip().strip("|"))]
    if not "".join(cells).replace("\\-", ""):
        return ""
    return f".TP\n.B {cells[0]}\n" + " \\(em ".join(filter(None, cells[1:])) + "\n"


def document_body(lines):
    """A document of docs/ as a page: headings, paragraphs, lists, tables; code stands as it is."""
    body, fenced = "", False
    for line in lines:
        kept = fenced or line.startswith("    ")
        if line.startswith("```"):
            fenced = not fenced
        elif line.startswith("#") and not fenced:
            body += f".SH {plain(line.lstrip('# '))}\n"
        elif not line.strip():
            body += ".PP\n"
        elif kept:
            body += f".nf\n{roff(line)}\n.fi\n"
        elif line.startswith("|"):
            body += table_row(line)
        elif item := re.match(r"(-|\d+\.) +(.*)", line):
            body += f".IP {roff(item[1])} 4\n{plain(item[2])}\n"
        else:
            body += plain(line.strip()) + "\n"
    return body.replace(".fi\n.nf\n", "")


def write_document(folder, page, name, section):
    title, *lines = page.read_text().splitlines()
    save_page(folder, name, section, plain(title.lstrip("# ")).replace("\\-", "-"),
              ".SH DESCRIPTION\n" + document_body(lines))


class Command:
    """A program or a subcommand: its help, its words, and what is below it."""

    def __init__(self, program, path=(), everywhere=()):
        self.path = path
        run = subprocess.run([program, *path, "--help"], capture_output=True, text=True, check=True)
        self.help = run.stdout.replace(str(program), program.name)
        self.options = re.findall(r"^  (?:-\w,)?(--[a-z][a-z-]*)", self.help, re.M)
        everywhere = everywhere or [o for o in self.options if o not in ("--help", "--version")]
        self.options += [option for option in everywhere if option not in self.options]
        _, _, below = self.help.partition("\nSubcommands:\n")
        self.children = [Command(program, (*path, name), everywhere)
                         for name in re.findall(r"^  ([a-z][a-z-]*)", below, re.M)]

    def all(self):
        yield self
        for child in self.children:
            yield from child.all()

    def words(self):
        return [child.path[-1] for child in self.children] + self.options

    def purpose(self):
        return self.help.strip().splitlines()[0].replace("'", "")


# "$@": the words before the one to complete. Sets `offer` to what may stand there.
LOOK_UP = """    local place= word offer=
    for word in "$@"; do
        case "${{place:+$place }}$word" in
        {places}) place="${{place:+$place }}$word" ;;
        esac
    done
    case "$place" in
{offers}
    esac
"""


def look_up(root):
    places = "|".join(f'"{" ".join(c.path)}"' for c in root.all() if c.path) or '"/"'
    offers = "\n".join(f'    "{" ".join(c.path)}") offer="{" ".join(c.words())}" ;;'
                       for c in root.all())
    return LOOK_UP.format(places=places, offers=offers)


def bash_completion(name, root):
    function = "_" + name.replace("-", "_")
    return (f"{function}_words() {{\n{look_up(root)}    echo \"$offer\"\n}}\n"
            f"{function}() {{\n"
            f'    local before=("${{COMP_WORDS[@]:1:COMP_CWORD-1}}")\n'
            f'    mapfile -t COMPREPLY < <(compgen -W "$({function}_words "${{before[@]}}")" '
            f'-- "${{COMP_WORDS[COMP_CWORD]}}")\n}}\n'
            f"complete -o default -F {function} {name}\n")


def zsh_completion(name, root):
    function = "_" + name.replace("-", "_")
    return (f"#compdef {name}\n{function}_words() {{\n{look_up(root)}    echo \"$offer\"\n}}\n"
            f'compadd -- ${{=$({function}_words "${{(@)words[2,CURRENT-1]}}")}} || _files\n')


def fish_completion(name, root):
    lines = []
    for command in root.all():
        seen = " and ".join(f"__fish_seen_subcommand_from {word}" for word in command.path)
        where = f"'{seen.replace(' and ', '; and ')}'" if seen else "__fish_use_subcommand"
        lines += [f"complete -c {name} -n {where} -f -a {child.path[-1]} -d '{child.purpose()}'"
                  for child in command.children]
        lines += [f"complete -c {name} -n {where} -l {option[2:]}" for option in command.options]
    return "\n".join(lines) + "\n"


def write_program(folder, program):
    name = program.name
    root = Command(program)
    ends_alike = os.path.commonprefix([command.help[::-1] for command in root.all()])[::-1]
    _, _, footer = ends_alike.partition("\n\n")  # of every help; said once is enough
    write_page(folder, name, 1, PURPOSE[name], [
        ("DESCRIPTION", root.help),
        *((" ".join(c.path).upper(), c.help.replace(footer, "")) for c in root.all() if c.path),
        ("ENVIRONMENT", ENVIRONMENT),
        ("SEE ALSO", "ZeltoNavPort(3), zelto-workbench(7), zelto-scripts(7), zelto-picture(7),\n"
                     "zelto-positions(7), zelto-protocol(7)"),
    ])
    for shell, file, text in (("bash", name, bash_completion(name, root)),
                              ("zsh", "_" + name, zsh_completion(name, root)),
                              ("fish", name + ".fish", fish_completion(name, root))):
        (folder / shell).mkdir(parents=True, exist_ok=True)
        (folder / shell / file).write_text(text)


def main():
    folder, kind, source = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
    writers = {"library": write_library, "program": write_program, "document": write_document}
    writers[kind](folder, source, *sys.argv[4:])


if __name__ == "__main__":
    main()
