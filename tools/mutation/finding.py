"""Walks the syntax tree of a file and asks for the changes of each node."""

import re
from dataclasses import dataclass, replace

from clang.cindex import CursorKind as Kind
from clang.cindex import TypeKind

from . import operators
from .changes import ENTRY, PLAIN, Changes
from .source import FUNCTIONS, RECORDS, qualified_name

LITERALS = {Kind.INTEGER_LITERAL, Kind.FLOATING_LITERAL, Kind.CXX_BOOL_LITERAL_EXPR, Kind.STRING_LITERAL,
            Kind.CHARACTER_LITERAL}
# Evaluated by the compiler, or not at all.
LEFT_ALONE = {Kind.STATIC_ASSERT, Kind.ENUM_DECL, Kind.CXX_UNARY_EXPR, Kind.CXX_TYPEID_EXPR, Kind.TYPE_ALIAS_DECL,
              Kind.TYPEDEF_DECL, Kind.FRIEND_DECL, Kind.TEMPLATE_TYPE_PARAMETER, Kind.TEMPLATE_NON_TYPE_PARAMETER}


@dataclass(frozen=True)
class Context:
    function: str = ""
    text: str = ""
    parameters: tuple = ()
    result: object = None
    form: str = ""  # where nothing can be chosen at run time
    in_constexpr: bool = False
    is_lambda: bool = False
    demoted: int = -1


class Finder:
    def __init__(self, source):
        self.source = source
        self.changes = Changes(source)

    def all(self):
        for cursor in self.source.top.get_children():
            if self.source.is_here(cursor):
                self.declaration(cursor, Context())
        return self.changes

    def declaration(self, cursor, context):
        if cursor.kind in LEFT_ALONE:
            return
        if cursor.kind in FUNCTIONS:
            self.function(cursor)
        elif cursor.kind in (Kind.VAR_DECL, Kind.FIELD_DECL):
            self.variable(cursor, replace(context, function=qualified_name(cursor)))
        else:
            for child in cursor.get_children():
                self.declaration(child, context)

    def function(self, cursor):
        children = list(cursor.get_children())
        body = children[-1] if children and children[-1].kind == Kind.COMPOUND_STMT else None
        place = self.source.range(cursor)
        if place is None:
            return
        head = self.source.text[place[0]:self.source.range(body)[0]] if body and self.source.range(body) else ""
        context = Context(qualified_name(cursor), self.source.text[place[0]:place[1]],
                          tuple(c for c in children if c.kind == Kind.PARM_DECL), cursor.result_type,
                          in_constexpr=re.search(r"\bconst(expr|eval)\b", head) is not None)
        for child in children:
            if child.kind == Kind.PARM_DECL:
                self.variable(child, context)
            elif child.kind.is_expression() and body:
                self.expression(child, context)
        if body and self.source.range(body):
            self.entry(body, context)
            self.statement(body, context)

    def entry(self, body, context):
        statements = list(body.get_children())
        first = self.source.range(statements[0]) if statements else None
        if len(statements) < 2 or first is None:
            return
        at = self.source.text.index("{", self.source.range(body)[0]) + 1
        kind = context.result.get_canonical().kind
        if kind == TypeKind.LVALUEREFERENCE:
            return
        returns = {TypeKind.VOID: ["return;"], TypeKind.INVALID: ["return;"],
                   TypeKind.BOOL: ["return true;", "return false;"]}.get(kind, ["return {};"])
        for text in returns:
            self.changes.add(context, "early return", ENTRY, (at, at), " " + text)

    def variable(self, cursor, context):
        place, text = self.source.range(cursor), self.source.text
        if place is None:
            return
        name_end = cursor.location.offset + len(cursor.spelling)
        head = text[place[0]:name_end]
        if re.search(r"\bconstexpr\b", head):
            context = self.demoted(cursor, place, head, context)
        children = [c for c in cursor.get_children() if self.source.range(c) and self.source.range(c)[0] >= name_end]
        for child in children:
            if text[name_end:self.source.range(child)[0]].lstrip().startswith("["):
                continue  # the size of an array
            self.expression(child, context)

    def demoted(self, cursor, place, head, context):
        """A constant of the compiler becomes one of the program, so that changes of it can be chosen at run time."""
        at = place[0] + re.search(r"\bconstexpr\b", head).start()
        in_class = cursor.semantic_parent.kind in RECORDS and "inline" not in head
        edits = [(at, len("constexpr"), "inline" if in_class else ""), (cursor.location.offset, 0, "const ")]
        self.changes.demotions[place[0]] = (cursor.spelling, edits)
        return replace(context, demoted=place[0], in_constexpr=False)

    def statement(self, cursor, context):
        children = list(cursor.get_children())
        kind = cursor.kind
        if kind == Kind.COMPOUND_STMT:
            for first, second in zip(children, children[1:]):
                operators.change_neighbours(self.changes, context, first, second)
        elif kind == Kind.CASE_STMT:
            self.expression(children.pop(0), replace(context, form=PLAIN))
        elif kind == Kind.RETURN_STMT:
            operators.change_return(self.changes, context, cursor)
        if kind in (Kind.IF_STMT, Kind.WHILE_STMT, Kind.FOR_STMT, Kind.DO_STMT):
            children = self.conditional(cursor, children, context)
        for child in children:
            self.part(child, context, cursor)

    def part(self, child, context, parent):
        """A statement, or an expression that belongs to one."""
        is_in_list = parent.kind in (Kind.COMPOUND_STMT, Kind.CASE_STMT, Kind.DEFAULT_STMT)
        if is_in_list or self.ends_statement(child, parent):
            operators.change_statement(self.changes, context, child)
        if child.kind == Kind.DECL_STMT:
            for variable in child.get_children():
                if variable.kind == Kind.VAR_DECL:
                    self.variable(variable, context)
        elif child.kind.is_statement():
            self.statement(child, context)
        elif child.kind == Kind.VAR_DECL:
            self.variable(child, context)
        elif child.kind not in (Kind.PARM_DECL, Kind.TYPE_REF):
            self.expression(child, context)

    def ends_statement(self, child, parent):
        """Whether this expression is the whole body of an if or a loop."""
        place, whole = self.source.range(child), self.source.range(parent)
        if parent.kind not in (Kind.IF_STMT, Kind.WHILE_STMT, Kind.FOR_STMT, Kind.CXX_FOR_RANGE_STMT) or place is None:
            return False
        before = self.source.text[whole[0]:place[0]].rstrip()
        return before.endswith((")", "else")) and re.match(r"\s*;", self.source.text[place[1]:]) is not None

    def conditional(self, cursor, children, context):
        whole, text = self.source.range(cursor), self.source.text
        if whole is None or re.match(r"if\s+constexpr", text[whole[0]:]):
            return children[1:]
        for child in children:
            place = self.source.range(child)
            if place is None or not child.kind.is_expression():
                continue
            ends = ";" if cursor.kind == Kind.FOR_STMT else ")"
            if text[:place[0]].rstrip()[-1:] in "(;" and text[place[1]:].lstrip()[:1] == ends and \
                    not (cursor.kind == Kind.FOR_STMT and text[:place[0]].rstrip()[-1:] == "("):
                operators.change_condition(self.changes, context, child)
        return children

    def expression(self, cursor, context):
        place = self.source.range(cursor)
        if cursor.kind in LEFT_ALONE or place is None:
            return
        if cursor.kind == Kind.LAMBDA_EXPR:
            return self.lambda_body(cursor, context)
        if cursor.kind.is_statement():
            return self.statement(cursor, context)
        self.change(cursor, context)
        if cursor.kind == Kind.DECL_REF_EXPR:
            return None
        for child in cursor.get_children():
            if cursor.kind == Kind.MEMBER_REF_EXPR and self.source.range(child) and \
                    self.source.range(child)[0] > cursor.location.offset:
                continue  # arguments of a template
            self.expression(child, context)
        return None

    def change(self, cursor, context):
        kind = cursor.kind
        operators.change_operator(self.changes, context, cursor)
        if kind in LITERALS:
            operators.change_literal(self.changes, context, cursor)
        elif kind == Kind.UNARY_OPERATOR:
            operators.change_unary(self.changes, context, cursor)
        elif kind == Kind.MEMBER_REF_EXPR:
            operators.change_member(self.changes, context, cursor)
        elif kind == Kind.DECL_REF_EXPR:
            operators.change_name(self.changes, context, cursor)
        elif kind == Kind.CONDITIONAL_OPERATOR:
            operators.change_condition(self.changes, context, next(iter(cursor.get_children())))
        elif kind == Kind.CALL_EXPR:
            operators.change_call(self.changes, context, cursor)

    def lambda_body(self, cursor, context):
        for child in cursor.get_children():
            if child.kind == Kind.COMPOUND_STMT:
                self.statement(child, replace(context, is_lambda=True))
