# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

"""Small changes of C++ sources, each of which some test should notice. For script/mutate."""

import re
from dataclasses import dataclass

# What stands between spaces is an operator here: clang-format puts none inside of template arguments.
SWAPS = [
    ('comparison', r'(?<= )(?:<=?|>=?|==|!=)(?= )',
     {'<': ['<=', '>='], '<=': ['<', '>'], '>': ['>=', '<='], '>=': ['>', '<'],
      '==': ['!='], '!=': ['==']}),
    ('shift', r'(?<= )(?:<<|>>)(?==? )', {'<<': ['>>'], '>>': ['<<']}),
    ('sign', r'(?<= )[-+*/%](?==? )', {'+': ['-'], '-': ['+'], '*': ['+'], '/': ['*'], '%': ['/']}),
    ('logic', r'(?<= )(?:&&|\|\|)(?= )', {'&&': ['||'], '||': ['&&']}),
    ('extreme', r'\b(?:min|max|Min|Max)(?=[(<])',
     {'min': ['max'], 'max': ['min'], 'Min': ['Max'], 'Max': ['Min']}),
]
NUMBER = re.compile(r"(?<![\w.'])(0[xX][\da-fA-F']+|\d[\d']*(?:\.\d+)?(?:e[-+]?\d+)?)([uUlLzZfF]*)(?![\w.'])")
SHIFTED = re.compile(r'(?:<<|>>)=? $')

# Comments, literals, lines of the preprocessor; then assertions, which the compiler runs, and lists
# in angle brackets, whose numbers are types.
HIDDEN = re.compile(
    r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'(?!\w)|^[ \t]*#(?:[^\n]*\\\n)*[^\n]*',
    re.DOTALL | re.MULTILINE)
ASSERTION = re.compile(r'\bstatic_assert\(')
ANGLE = re.compile(r'(?:\btemplate |(?<=\w))<(?![<= ])')

STATEMENT = re.compile(r'(?:\+\+|--|\*)?[A-Za-z_][\w:.]*(?:->[\w.]+|\[[^;=]*?\]|\([^;=]*?\)[.\[]\w*)*'
                       r'(?:\(.*\)| (?:[-+*/%&|^]|<<|>>)?= .*|\+\+|--)?;$|(?:break|continue|return);$')
NO_STATEMENT = re.compile(r'(?:using|throw|goto|delete|default|friend)\b|[A-Z]\w*\(\);')  # a constructor


@dataclass(frozen=True)
class Mutant:
    file: str
    line: int
    kind: str
    before: str  # the line without the space around it
    after: str


def blank(text, start, end):
    return text[:start] + re.sub(r'[^\n]', ' ', text[start:end]) + text[end:]


def end_of_brackets(text, start, opening, closing):
    """Behind the bracket that closes the one at `start`; `start` if a line's end of code comes first."""
    depth = 0
    for i in range(start, len(text)):
        if text[i] == opening:
            depth += 1
        elif text[i] == closing and text[i - 1] != '-':
            depth -= 1
            if depth == 0:
                return i + 1
        elif text[i] in ';{' and opening == '<':
            return start
    return start


def code_of(text):
    """The text with blanks for all that mutants leave alone."""
    text = HIDDEN.sub(lambda found: re.sub(r'[^\n]', ' ', found[0]), text)
    for pattern, opening, closing in ((ASSERTION, '(', ')'), (ANGLE, '<', '>')):
        position = 0
        while found := pattern.search(text, position):
            end = end_of_brackets(text, found.end() - 1, opening, closing)
            text = blank(text, found.end() - 1, end)
            position = max(end, found.end())
    return text


def other_numbers(digits, suffix, is_shift):
    if '.' in digits or 'e' in digits and not digits.startswith('0x'):
        value = float(digits)
        return [f'{changed}{suffix}' for changed in (value + 1, value - 1, 0.0) if changed != value]
    plain = digits.replace("'", '')
    value = int(plain, 16 if plain[:2].lower() == '0x' else 8 if re.match('0[0-7]', plain) else 10)
    values = [value + 1] if is_shift else [value + 1, value - 1, 0]
    return [f'{changed}{suffix}' if changed >= 0 else f'({changed})'
            for changed in dict.fromkeys(values) if changed != value]


def is_statement(code, complete):
    stripped = code.strip()
    return (complete and stripped.count('(') == stripped.count(')')
            and STATEMENT.fullmatch(stripped) and not NO_STATEMENT.match(stripped))


def changes_of(line, code, complete):
    """Kinds and changed lines. `complete`: no statement goes on from the line before."""
    for kind, pattern, others in SWAPS:
        for found in re.finditer(pattern, code):
            for other in others[found[0]]:
                yield kind, line[:found.start()] + other + line[found.end():]
    for found in NUMBER.finditer(code):
        is_shift = SHIFTED.search(code[:found.start()]) is not None
        for other in other_numbers(found[1], found[2], is_shift):
            yield 'shift' if is_shift else 'constant', line[:found.start()] + other + line[found.end():]
    if is_statement(code, complete):
        yield 'statement', ';'


def mutants_of(file, text):
    complete = True
    for number, (line, code) in enumerate(zip(text.splitlines(), code_of(text).splitlines()), 1):
        for kind, changed in changes_of(line, code, complete):
            yield Mutant(file, number, kind, line.strip(), changed.strip())
        if code.strip():
            complete = code.rstrip()[-1] in ';{}:'
