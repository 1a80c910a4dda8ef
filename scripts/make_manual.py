#!/usr/bin/env python3
"""Makes the manual page and the completion for bash of kvreflash from what `kvreflash --help` says.

usage: make_manual.py TOOL VERSION MAN_PAGE COMPLETION
"""

import re
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

# Values that the shell completes as folders, as files, and as one of the words that the help lists.
FOLDER_VALUES = ("DIR",)
FILE_VALUES = ("FILE",)
WORD_VALUES = ("FORMAT", "HOW")


@dataclass
class Option:
    """An option or argument of a command."""
    names: list
    value: str
    meaning: str

    def is_positional(self):
        return not self.names[0].startswith("-")

    def words(self):
        """The values that the help lists: "How it is done: one, two (as a remark) or three (default: one)"."""
        listed = re.sub(r" \(.*?\)", "", self.meaning.partition(": ")[2])
        return re.split(r", | or ", listed)


@dataclass
class Command:
    """A command and what it takes."""
    name: str
    meaning: str
    usage: str
    options: list


def entries_of(help_text, heading):
    """[(names, meaning)] of a list of the help."""
    part = help_text.partition(f"\n{heading}:\n")[2].partition("\n\n")[0]
    return re.findall(r"^  (\S.*?) {2,}(\S.*)$", part, re.MULTILINE)


def option_of(names, meaning):
    words = names.split()
    return Option(words[0].split(","), " ".join(word for word in words[1:] if word != "REQUIRED"),
                  ("Required. " if "REQUIRED" in words else "") + meaning)


def command_of(name, meaning, help_text):
    entries = entries_of(help_text, "Positionals") + entries_of(help_text, "Options")
    usage = re.search(r"^Usage: (.*)$", help_text, re.MULTILINE).group(1)
    return Command(name, meaning, usage, [option_of(*entry) for entry in entries])


def footer_of(help_text):
    """What stands behind the lists of the main help."""
    return help_text.partition("\nCommands:\n")[2].partition("\n\n")[2].strip()


DOCUMENTS = ("The documents, an example archive and an example rack are in share/doc/kvreflash below the folder that the "
             "package was installed in: docs/commands.md has examples of each command and option.")


# --- the manual page --------------------------------------------------------------------------------------------------

def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return re.sub(r"^([.'])", r"\\&\1", text, flags=re.MULTILINE)


def option_roff(option):
    names = ", ".join(f"\\fB{roff(name)}\\fR" for name in option.names)
    value = f" \\fI{roff(option.value)}\\fR" if option.value else ""
    return f".TP\n{names}{value}\n{roff(option.meaning)}\n"


def description_and_lists(footer):
    """The paragraphs of the footer, and its lists as sections of their own."""
    paragraphs, sections = "", ""
    for paragraph in footer.split("\n\n"):
        heading, _, rows = paragraph.partition(":\n")
        if rows:
            sections += f".SH {roff(heading.upper())}\n"
            sections += "".join(f".TP\n{word}\n{roff(meaning)}\n"
                                for word, meaning in re.findall(r"^ +(\S+) +(.*)$", rows, re.MULTILINE))
        else:
            paragraphs += f".PP\n{roff(paragraph)}\n"
    return paragraphs, sections


def man_page(summary, commands, footer, version):
    description, lists = description_and_lists(footer)
    text = f'.TH KVREFLASH 1 "" "kvreflash {version}" "User Commands"\n'
    text += f".SH NAME\nkvreflash \\- {roff(summary.rstrip('.').lower())}\n"
    text += ".SH SYNOPSIS\n.B kvreflash\n.I COMMAND\n[\\fIOPTIONS\\fR]\n"
    text += f".SH DESCRIPTION\n{description}.SH COMMANDS\n"
    for command in commands:
        text += f".SS {roff(command.name)}\n{roff(command.meaning)}\n.PP\n.B {roff(command.usage)}\n"
        text += "".join(option_roff(option) for option in command.options if "--help" not in option.names)
    return text + lists + f".SH SEE ALSO\n{roff(DOCUMENTS)}\n"


# --- the completion ---------------------------------------------------------------------------------------------------

def completion(commands):
    options = [option for command in commands for option in command.options if not option.is_positional()]

    def cases(generator, chosen):
        names = sorted({name for option in chosen for name in option.names})
        return f"""    {'|'.join(names)})
        mapfile -t COMPREPLY < <(compgen {generator} -- "$word")
        return
        ;;
"""

    values = cases("-d", (option for option in options if option.value in FOLDER_VALUES))
    values += cases("-f", (option for option in options if option.value in FILE_VALUES))
    for option in options:
        if option.value in WORD_VALUES:
            values += cases(f"-W '{' '.join(option.words())}'", [option])
    values += cases("-W ''", (option for option in options
                              if option.value and option.value not in FOLDER_VALUES + FILE_VALUES + WORD_VALUES))
    names = " ".join(command.name for command in commands)
    return f"""# Completion of kvreflash for bash.
_kvreflash() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}} words folders=
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W '{names} --help' -- "$word")
        return
    fi
    # The shell takes --option=VALUE apart.
    if [[ $word == = ]]; then
        word=
    elif [[ $previous == = ]]; then
        previous=${{COMP_WORDS[COMP_CWORD - 2]}}
    fi
    case $previous in
{values}    esac
    case ${{COMP_WORDS[1]}} in
{''.join(command_case(command) for command in commands)}    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    elif [[ $folders ]]; then
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
    fi
}}
complete -o filenames -F _kvreflash kvreflash
"""


def command_case(command):
    words = " ".join(name for option in command.options for name in option.names if name.startswith("--"))
    takes_folder = any(option.is_positional() and option.names[0] in FOLDER_VALUES for option in command.options)
    return f"    {command.name}) words='{words}'{' folders=yes' if takes_folder else ''} ;;\n"


def main(tool, version, man, bash):
    def help_of(*words):
        return subprocess.run([tool, *words, "--help"], check=True, capture_output=True,
                              encoding="utf-8").stdout

    main_help = help_of()
    commands = [command_of(name, meaning, help_of(name)) for name, meaning in entries_of(main_help, "Commands")]
    summary = main_help.partition("\n")[0]
    Path(man).write_text(man_page(summary, commands, footer_of(main_help), version), encoding="utf-8")
    Path(bash).write_text(completion(commands), encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
