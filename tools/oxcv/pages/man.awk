# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# A manual page from what `oxcv --help` or `oxcv COMMAND --help` prints; -v command=, or -v title=oxcv
# for the tool itself, and -v version=. Tables of options become lists, indented lines stay as they are.

function escaped(text) {
    gsub(/\\/, "\\e", text)
    gsub(/-/, "\\-", text)
    sub(/^[.']/, "\\\\\\&&", text)
    return text
}

function section(name) {
    fill()
    print ".SH " toupper(name)
}

function fill() {
    if (is_literal) {
        print ".fi\n.RE"
    }
    is_literal = 0
}

function literal(text) {
    if (!is_literal) {
        print ".RS 4\n.nf"
    }
    is_literal = 1
    print escaped(text)
}

BEGIN {
    name = "oxcv" (command == "" ? "" : "-" command)
    printf ".TH %s 1 \"\" \"oxcv %s\" \"User Commands\"\n", toupper(name), version
}

NR == 1 {
    sub(/^oxcv: /, "")
    section("name")
    print escaped(name) " \\- " escaped(tolower(substr($0, 1, 1)) substr($0, 2))
    next
}

/^Usage: / {
    section("synopsis")
    print ".B " escaped(substr($0, 8))
    next
}

/^(Positionals|Options|Subcommands):$/ {
    section($0 == "Positionals:" ? "arguments" : $0 == "Subcommands:" ? "commands" : "options")
    in_table = 1
    next
}

# Words of an option may reach into the column of the text, which is on the next line then.
in_table && /^  [^ ]/ {
    head = substr($0, 3, 28)
    text = substr($0, 31)
    if (head !~ / $/) {
        head = substr($0, 3)
        text = ""
    }
    sub(/ +$/, "", head)
    print ".TP\n.B " escaped(head)
    if (text != "") {
        print escaped(text)
    }
    next
}

in_table && /^ +[^ ]/ {
    sub(/^ +/, "")
    print escaped($0)
    next
}

/^$/ {
    fill()
    ends_sentence = 0
    was_empty = 1
    if (in_table) {
        in_table = 0
        after_table = 1
    }
    next
}

/^[A-Z][a-z ]*:$/ {
    section(substr($0, 1, length($0) - 1))
    was_empty = after_table = 0
    next
}

/^Exit status/ {
    section("exit status")
    sub(/^Exit status: /, "")
    was_empty = after_table = 0
}

/^  / {
    literal(substr($0, 3))
    was_empty = 0
    next
}

{
    was_literal = is_literal
    fill()
    if (after_table) {
        section("description")
    } else if (was_empty || (was_literal && /^[A-Z]/)) {
        print ".PP"
    } else if (ends_sentence) {
        print ".br"
    }
    was_empty = after_table = 0
    ends_sentence = /\.$/
    print escaped($0)
}

END {
    section("see also")
    count = split("oxcv oxcv-convert oxcv-tensor", names, " ")
    separator = ""
    for (i = 1; i <= count; ++i) {
        if (names[i] != name) {
            printf "%s.BR %s (1)", separator, escaped(names[i])
            separator = ",\n"
        }
    }
    print ""
}
