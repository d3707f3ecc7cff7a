# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# A shell's completions from what `oxcv --help` and then each `oxcv COMMAND --help` print; -v shell=
# bash, zsh or fish, and -v formats= the names of formats, with blanks between them.

function trimmed(text) {
    gsub(/^ +| +$/, "", text)
    return text
}

# The words that an option takes, with blanks between them; empty if there is no list of them.
function choicesOf(type, text) {
    if (match(type, /:\{[^}]*\}/)) {
        type = substr(type, RSTART + 2, RLENGTH - 3)
        gsub(/,/, " ", type)
        return type
    }
    if (type ~ /^(NAME|BITS)/ && match(text, /: [a-z0-9]+(, [a-z0-9]+)+$/)) {
        text = substr(text, RSTART + 2)
        gsub(/,/, "", text)
        return text
    }
    return type ~ /^NAME$/ ? formats : ""
}

function endOption() {
    if (names == "") {
        return
    }
    text = trimmed(text)
    if (section == "Subcommands") {
        commands[++command_count] = names
        about[names] = text
    } else if (section == "Options") {
        ++option_count
        option_command[option_count] = command
        count = split(names, parts, ",")
        option_long[option_count] = parts[count]
        option_short[option_count] = count > 1 ? parts[1] : ""
        option_type[option_count] = type
        option_choices[option_count] = choicesOf(type, text)
        option_text[option_count] = text
    }
    names = ""
}

/^Usage: / {
    endOption()
    command = $3 ~ /^[a-z]/ ? $3 : ""
    section = ""
    next
}

/^(Positionals|Options|Subcommands):$/ {
    endOption()
    section = substr($0, 1, length($0) - 1)
    next
}

/^$/ {
    endOption()
    section = ""
    next
}

section != "" && /^  [^ ]/ {
    endOption()
    names = $1
    head = substr($0, 3)
    text = ""
    if (substr($0, 3, 28) ~ / $/) {
        head = substr($0, 3, 28)
        text = substr($0, 31)
    }
    count = split(head, parts, " ")
    type = count > 1 && parts[2] !~ /:$/ ? parts[2] : ""
    next
}

section != "" {
    text = text " " trimmed($0)
}

END {
    endOption()
    print (shell == "zsh" ? "#compdef oxcv" : "# Completions of oxcv.")
    if (shell == "bash") {
        bash()
    } else if (shell == "zsh") {
        zsh()
    } else {
        fish()
    }
}

function commandWords(  i, words) {
    for (i = 1; i <= command_count; ++i) {
        words = words (i > 1 ? " " : "") commands[i]
    }
    return words
}

function bash(  i, c, words) {
    print "_oxcv() {"
    print "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}"
    print "    local command= words= word"
    print "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do"
    print "        [[ $word == [a-z]* ]] && { command=$word; break; }"
    print "    done"
    print "    COMPREPLY=()"
    print "    case $command,$previous in"
    for (i = 1; i <= option_count; ++i) {
        if (option_choices[i] != "") {
            printf "        %s,%s) words='%s' ;;\n", option_command[i], option_long[i], option_choices[i]
        } else if (option_type[i] != "" && option_type[i] != "FILE") {
            printf "        %s,%s) return ;;\n", option_command[i], option_long[i]
        }
    }
    print "    esac"
    print "    if [[ -z $words ]]; then"
    print "        case $command in"
    for (c = 0; c <= command_count; ++c) {
        words = c == 0 ? commandWords() : ""
        for (i = 1; i <= option_count; ++i) {
            if (option_command[i] == commands[c]) {
                words = words (words == "" ? "" : " ") option_long[i]
            }
        }
        printf "            %s) words='%s' ;;\n", c == 0 ? "''" : commands[c], words
    }
    print "        esac"
    print "        [[ -n $command && $current != -* ]] && return"
    print "    fi"
    print "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")"
    print "}"
    print "complete -o default -F _oxcv oxcv"
}

function quoted(text) {
    gsub(/'/, "'\\''", text)
    return "'" text "'"
}

# In zsh's lists of options, brackets and colons stand for something else.
function zshText(text) {
    gsub(/\[/, "\\[", text)
    gsub(/\]/, "\\]", text)
    gsub(/:/, "\\:", text)
    return text
}

function zshOption(i,  value) {
    value = ""
    if (option_type[i] == "FILE") {
        value = ":file:_files"
    } else if (option_choices[i] != "") {
        value = ":value:(" option_choices[i] ")"
    } else if (option_type[i] != "") {
        value = ":" zshText(option_type[i]) ": "
    }
    return quoted(option_long[i] "[" zshText(option_text[i]) "]" value)
}

function zsh(  i, c) {
    print "_oxcv() {"
    print "    local curcontext=$curcontext state line"
    print "    local -a commands"
    print "    commands=("
    for (c = 1; c <= command_count; ++c) {
        print "        " quoted(commands[c] ":" zshText(about[commands[c]]))
    }
    print "    )"
    print "    _arguments -C \\"
    for (i = 1; i <= option_count; ++i) {
        if (option_command[i] == "") {
            print "        " zshOption(i) " \\"
        }
    }
    print "        '1: :->command' '*:: :->rest'"
    print "    case $state in"
    print "        command) _describe command commands ;;"
    print "        rest)"
    print "            case $line[1] in"
    for (c = 1; c <= command_count; ++c) {
        print "                " commands[c] ")"
        print "                    _arguments \\"
        for (i = 1; i <= option_count; ++i) {
            if (option_command[i] == commands[c]) {
                print "                        " zshOption(i) " \\"
            }
        }
        print "                        '*:file:_files'"
        print "                    ;;"
    }
    print "            esac"
    print "            ;;"
    print "    esac"
    print "}"
    print "_oxcv \"$@\""
}

function fish(  i, c, condition, value) {
    for (c = 1; c <= command_count; ++c) {
        printf "complete -c oxcv -f -n __fish_use_subcommand -a %s -d %s\n", commands[c], \
            quoted(about[commands[c]])
    }
    for (i = 1; i <= option_count; ++i) {
        condition = option_command[i] == "" ? "__fish_use_subcommand" : \
            "__fish_seen_subcommand_from " option_command[i]
        value = option_type[i] == "" ? "" : option_type[i] == "FILE" ? " -r -F" : " -x"
        if (option_choices[i] != "") {
            value = value " -a " quoted(option_choices[i])
        }
        printf "complete -c oxcv -n '%s' -l %s%s%s -d %s\n", condition, substr(option_long[i], 3), \
            option_short[i] == "" ? "" : " -s " substr(option_short[i], 2), value, \
            quoted(option_text[i])
    }
}
