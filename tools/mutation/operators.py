"""The changes that are made: each function looks at one node of the syntax tree."""

import re

from clang.cindex import CursorKind as Kind
from clang.cindex import TypeKind

from .changes import EXCHANGE, EXPRESSION, PLAIN, RETURN, SKIP, SWAP, TRUTH

OTHER_OPERATOR = {
    "==": ("!=", "flipped comparison"), "!=": ("==", "flipped comparison"),
    "<": ("<=", "moved bound"), "<=": ("<", "moved bound"), ">": (">=", "moved bound"), ">=": (">", "moved bound"),
    "&&": ("||", "flipped connective"), "||": ("&&", "flipped connective"),
    "+": ("-", "other operator"), "-": ("+", "other operator"), "*": ("+", "other operator"),
    "/": ("*", "other operator"), "%": ("/", "other operator"), "&": ("|", "other operator"),
    "|": ("&", "other operator"), "^": ("|", "other operator"), "<<": (">>", "other operator"),
    ">>": ("<<", "other operator"), "+=": ("-=", "other operator"), "-=": ("+=", "other operator"),
    "|=": ("&=", "other operator"), "&=": ("|=", "other operator"), ">>=": ("<<=", "other operator"),
    "<<=": (">>=", "other operator"),
}
ARITHMETIC = {"+", "-", "*", "/", "%", "&", "|", "^", "<<", ">>", "+=", "-=", "|=", "&=", ">>=", "<<="}


def operator_of(source, cursor):
    """(left, operator's place, operator, right) of a binary operator, overloaded or not."""
    operands = sorted((c for c in cursor.get_children() if source.range(c)), key=lambda c: source.range(c))
    if len(operands) < 2:
        return None
    left, right, whole = operands[0], operands[-1], source.range(cursor)
    begin, end = source.range(left)[1], source.range(right)[0]
    if whole != (source.range(left)[0], source.range(right)[1]) or begin >= end:
        return None
    operator = source.text[begin:end].strip()
    place = begin + source.text[begin:end].find(operator)
    return (left, (place, place + len(operator)), operator, right) if operator in OTHER_OPERATOR else None


def is_arithmetic(cursor):
    kind = cursor.type.get_canonical().kind
    return TypeKind.BOOL.value < kind.value <= TypeKind.LONGDOUBLE.value or kind in (
        TypeKind.INT128, TypeKind.DEPENDENT, TypeKind.POINTER)


def change_operator(changes, context, cursor):
    parts = operator_of(changes.source, cursor)
    if parts is None:
        return
    left, place, operator, right = parts
    source, whole = changes.source, changes.source.range(cursor)
    before, after = source.text[whole[0]:place[0]], source.text[place[1]:whole[1]]
    if operator in ("&&", "||"):
        truth = "true" if operator == "&&" else "false"
        for operand in (left, right):
            changes.add(context, f"condition {truth}", TRUTH, source.range(operand), truth)
    if operator in ARITHMETIC and not is_arithmetic(cursor):
        return
    if operator in ("+", "-") and source.slice(right) == "1":
        changes.add(context, "dropped step", EXPRESSION, whole, before.rstrip())
    other, kind = OTHER_OPERATOR[operator]
    changes.add(context, kind, EXPRESSION, whole, before + other + after)


def change_unary(changes, context, cursor):
    place, text = changes.source.range(cursor), changes.source.slice(cursor)
    if text.startswith("!="):
        return  # the language's own negation of an equality
    if text.startswith("!"):
        changes.add(context, "dropped negation", EXPRESSION, place, f"static_cast<bool>({text[1:]})")
    for step, back in (("++", "--"), ("--", "++")):
        if text.startswith(step):
            changes.add(context, "other operator", EXPRESSION, place, back + text[2:])
        elif text.endswith(step):
            changes.add(context, "other operator", EXPRESSION, place, text[:-2] + back)
    if text.startswith("-") and not text.startswith("--"):
        changes.add(context, "other operator", EXPRESSION, place, text[1:])


def change_literal(changes, context, cursor):
    place, text = changes.source.range(cursor), changes.source.slice(cursor)
    kind = cursor.kind
    if kind == Kind.INTEGER_LITERAL:
        match = re.fullmatch(r"(0[xX])?([0-9a-fA-F']+?)([uUlLzZ]*)", text)
        if match is None:
            return
        number = int(match[2].replace("'", ""), 16 if match[1] else 10)
        for other in (number + 1, 0) if number == 1 else (number + 1,):
            changes.add(context, "changed number", EXPRESSION, place,
                        (hex(other) if match[1] else str(other)) + match[3].lower())
    elif kind == Kind.FLOATING_LITERAL:
        changes.add(context, "changed number", EXPRESSION, place, str(float(text) + 1) if text[-1].isdigit() else "1.5")
    elif kind == Kind.CXX_BOOL_LITERAL_EXPR:
        changes.add(context, "changed truth", EXPRESSION, place, "false" if text == "true" else "true")
    elif kind == Kind.CHARACTER_LITERAL:
        other = "'x'" if "'y'" in text else "'y'"
        changes.add(context, "changed text", EXPRESSION, place, text[:text.index("'")] + other)
    elif kind == Kind.STRING_LITERAL and text.endswith('"') and "R\"" not in text:
        # As long as before, so that its type stays: "x" and "xy" are arrays of different sizes.
        first = text.index('"') + 1
        escaped = 2 if text[first] == "\\" else 0 if text[first] == '"' else 1
        changes.add(context, "changed text", EXPRESSION, place,
                    text[:first] + ("x" if text[first] == "y" else "y") + text[first + escaped:])


def plain_type(kind):
    name = kind.get_canonical().spelling.rstrip("& ").removesuffix("const").rstrip()
    return name if "*" in name else name.removeprefix("const ")


def neighbour(one, others, same):
    """The next of those that could stand for this one by mistake, the first after the last."""
    similar, place = [], None
    for other in others:
        if other == one:
            place = len(similar)
        elif other.spelling != one.spelling and same(other):
            similar.append(other.spelling)
    return similar[(place or 0) % len(similar)] if similar else None


def other_name(changes, context, cursor, place, kind, name):
    """The expression at `place` with the name that `cursor` refers to replaced by another."""
    at, old, text = cursor.location.offset, cursor.referenced.spelling, changes.source.text
    if name is not None and place is not None and text[at:at + len(old)] == old and place[0] <= at < place[1]:
        changes.add(context, kind, EXPRESSION, place, text[place[0]:at] + name + text[at + len(old):place[1]])


def siblings(target, kind):
    return [c for c in target.semantic_parent.get_children() if c.kind == kind] if target.semantic_parent else []


def change_member(changes, context, cursor):
    target = cursor.referenced
    if target is None or target.kind != Kind.FIELD_DECL:
        return
    same = lambda other: plain_type(other.type) == plain_type(target.type)
    other_name(changes, context, cursor, changes.source.range(cursor), "other member",
               neighbour(target, siblings(target, Kind.FIELD_DECL), same))


def change_name(changes, context, cursor):
    target, place = cursor.referenced, changes.source.range(cursor)
    if target is None:
        return
    same = lambda other: plain_type(other.type) == plain_type(target.type)
    if target.kind == Kind.PARM_DECL and context.parameters:
        other_name(changes, context, cursor, place, "other argument", neighbour(target, context.parameters, same))
    elif target.kind == Kind.ENUM_CONSTANT_DECL:
        other_name(changes, context, cursor, place, "other constant",
                   neighbour(target, siblings(target, Kind.ENUM_CONSTANT_DECL), same))
    elif target.kind in (Kind.VAR_DECL, Kind.FUNCTION_DECL) and target.semantic_parent.kind != Kind.FUNCTION_DECL:
        file = target.location.file.name if target.location.file else ""
        here = lambda other: same(other) and other.location.file is not None and other.location.file.name == file
        if "/usr/" not in file and not changes.source.slice(cursor).startswith("std::"):
            kind = "other constant" if target.kind == Kind.VAR_DECL else "other function"
            other_name(changes, context, cursor, place, kind, neighbour(target, siblings(target, target.kind), here))


def change_call(changes, context, cursor):
    source, whole = changes.source, changes.source.range(cursor)
    children = list(cursor.get_children())
    if cursor.spelling.startswith("operator") or not source.text[whole[0]:whole[1]].endswith(")"):
        return
    target = cursor.referenced
    if target is not None and target.kind == Kind.CXX_METHOD and children and children[0].kind == Kind.MEMBER_REF_EXPR:
        public = lambda other: (other.type.spelling == target.type.spelling and other.access_specifier ==
                                target.access_specifier and not other.spelling.startswith("operator"))
        if "/usr/" not in (target.location.file.name if target.location.file else "/usr/"):
            other_name(changes, context, children[0], whole, "other member",
                       neighbour(target, siblings(target, Kind.CXX_METHOD), public))
    arguments = [a for a in cursor.get_arguments() if a is not None and source.range(a)]
    for first, second in zip(arguments, arguments[1:]):
        a, b = source.range(first), source.range(second)
        is_list = "{" in (source.text[a[0]], source.text[b[0]])
        if a[1] <= b[0] and whole[0] < a[0] and not is_list and plain_type(first.type) == plain_type(second.type):
            changes.add(context, "swapped arguments", EXCHANGE, a, source.slice(second), b)


def change_condition(changes, context, cursor):
    place = changes.source.range(cursor)
    if place and changes.source.text[place[0]:place[1]] not in ("true", "false"):
        for truth in ("true", "false"):
            changes.add(context, f"condition {truth}", TRUTH, place, truth)


def change_return(changes, context, cursor):
    place = changes.source.statement_range(cursor)
    value = next(iter(cursor.get_children()), None)
    if value is None or place is None or changes.source.range(value) is None:
        return
    text = changes.source.slice(value)
    if value.type.get_canonical().kind == TypeKind.BOOL:
        if text not in ("true", "false"):
            change_condition(changes, context, value)
    elif context.is_lambda or context.result.get_canonical().kind == TypeKind.LVALUEREFERENCE:
        return
    elif text not in ("{}", "nullptr", "0") and not text.endswith("{}"):
        changes.add(context, "other result", RETURN, place, "return {};")


def calls_something(cursor):
    """Whether the order of this statement and another one could matter."""
    calls = (node for node in cursor.walk_preorder() if node.kind == Kind.CALL_EXPR)
    return any(not call.spelling.startswith("operator") and call.spelling not in ("move", "get") and
               (call.referenced is None or call.referenced.kind != Kind.CONSTRUCTOR) for call in calls)


def is_deletable(source, statement):
    if statement.kind in (Kind.BREAK_STMT, Kind.CONTINUE_STMT, Kind.FOR_STMT, Kind.CXX_FOR_RANGE_STMT, Kind.WHILE_STMT):
        return True
    return statement.kind.is_expression() and not source.slice(statement).startswith("static_cast<void>")


def change_statement(changes, context, statement):
    place = changes.source.statement_range(statement)
    if place and is_deletable(changes.source, statement):
        changes.add(context, "deleted statement", SKIP, place, "")
    elif place and statement.kind == Kind.DECL_STMT:
        for variable in statement.get_children():
            named = re.findall(rf"\b{re.escape(variable.spelling)}\b", context.text) if variable.spelling else []
            is_object = variable.kind == Kind.VAR_DECL and variable.type.get_canonical().kind == TypeKind.RECORD
            if is_object and len(named) == 1:
                changes.add(context, "deleted statement", PLAIN, place, "")


def change_neighbours(changes, context, first, second):
    a, b = changes.source.statement_range(first), changes.source.statement_range(second)
    if a and b and first.kind.is_expression() and second.kind.is_expression():
        if calls_something(first) and calls_something(second):
            changes.add(context, "swapped neighbours", SWAP, a, changes.source.text[b[0]:b[1]], b)
