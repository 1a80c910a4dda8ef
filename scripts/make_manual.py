#!/usr/bin/env python3
"""Makes the manual page and the completion for bash of kvreflash from what `kvreflash --help` says.

usage: make_manual.py TOOL VERSION MAN_PAGE COMPLETION
"""

import re
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

# Values that the shell completes as folders.
FOLDER_VALUES = ("DIR",)


@dataclass
class Option:
    """An option or argument of a command."""
    names: list
    value: str
    meaning: str


@dataclass
class Command:
    """A command and what it takes."""
    name: str
    meaning: str
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
    return Command(name, meaning, [option_of(*entry) for entry in entries])


def footer_of(help_text):
    """What stands behind the lists of the main help."""
    return help_text.partition("\nCommands:\n")[2].partition("\n\n")[2].strip()


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
        text += f".SS {roff(command.name)}\n{roff(command.meaning)}\n"
        text += "".join(option_roff(option) for option in command.options if "--help" not in option.names)
    return text + lists


# --- the completion ---------------------------------------------------------------------------------------------------

def completion(commands):
    names = " ".join(command.name for command in commands)
    folders = sorted({name for command in commands for option in command.options
                      for name in option.names if option.value in FOLDER_VALUES and name.startswith("-")})
    valued = sorted({name for command in commands for option in command.options
                     for name in option.names if option.value and name.startswith("-")} - set(folders))
    cases = "\n".join(
        f"    {command.name}) words='{' '.join(name for option in command.options for name in option.names if name.startswith('--'))}' ;;"
        for command in commands)
    return f"""# Completion of kvreflash for bash.
_kvreflash() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}} words
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W '{names} --help' -- "$word")
        return
    fi
    case $previous in
    {'|'.join(folders)})
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
        return
        ;;
    {'|'.join(valued)})
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
        ;;
    esac
    case ${{COMP_WORDS[1]}} in
{cases}
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    fi
}}
complete -o filenames -F _kvreflash kvreflash
"""


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
