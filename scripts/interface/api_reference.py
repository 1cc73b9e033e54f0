# SPDX-License-Identifier: MIT
"""The reference page, docs/api.md, generated from the header's comments."""
import re
import textwrap
import xml.etree.ElementTree as ET

from interface import fixed_results, public_header as header

PATH = "docs/api.md"
FIXED_RESULTS_TITLE = "Functions that do nothing"
WIDTH = 120


def inline(element):
    """The text of an element with its emphasis, on one line. Lists of arguments and results are left out."""
    parts = [element.text or ""]
    for child in element:
        if child.tag not in ("parameterlist", "simplesect", "orderedlist", "itemizedlist"):
            text = inline(child)
            marks = {"computeroutput": "`", "emphasis": "*", "bold": "**"}.get(child.tag, "")
            parts.append(f"{marks}{text}{marks}" if text else "")
        parts.append(child.tail or "")
    text = re.sub(r"\s+", " ", "".join(parts)).strip()
    return re.sub(r"#(RC_\w+)", r"`\1`", text)


def wrap(text, indent=""):
    return textwrap.fill(text, WIDTH, subsequent_indent=indent, break_long_words=False, break_on_hyphens=False)


def paragraphs(description):
    """A description as Markdown paragraphs and lists."""
    result = []
    for para in description.findall("para"):
        text = inline(para)
        if text:
            result.append(wrap(text))
        for items in list(para.findall("orderedlist")) + list(para.findall("itemizedlist")):
            marks = (f"{n}." if items.tag == "orderedlist" else "-" for n in range(1, 1000))
            result.append("\n".join(wrap(f"{mark} {inline(item.find('para'))}", "   ")
                                    for mark, item in zip(marks, items.findall("listitem"))))
    return result


def cell(text):
    return text.replace("|", "\\|")


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    return "\n".join(lines + ["| " + " | ".join(cell(text) for text in row) + " |" for row in rows])


def signature(member):
    arguments = []
    for param in member.findall("param"):
        kind = "".join(param.find("type").itertext()).replace(" *", "*")
        arguments.append(f"{kind} {param.findtext('declname', '')}".strip())
    kind = "".join(member.find("type").itertext()).replace(" *", "*")
    return f"{kind} {member.findtext('name')}({', '.join(arguments) or 'void'});"


def families(compound):
    """The functions of a group in the order of the header; neighbours with one description are one family."""
    result = []
    for member in header.functions(compound):
        text = ET.tostring(member.find("detaileddescription"))
        if result and ET.tostring(result[-1][0].find("detaileddescription")) == text:
            result[-1].append(member)
        else:
            result.append([member])
    return result


def heading(family):
    return ", ".join(member.findtext("name") for member in family)


def anchor(family):
    return heading(family).lower().replace(",", "").replace(" ", "-")


def function(family):
    description = family[0].find("detaileddescription")
    signatures = (textwrap.fill(signature(member), WIDTH, subsequent_indent="    ") for member in family)
    blocks = [f"### {heading(family)}", "```c\n" + "\n".join(signatures) + "\n```"]
    blocks += paragraphs(description)
    rows = [(f"`{item.findtext('.//parametername')}`", inline(item.find("parameterdescription/para")))
            for item in description.findall(".//parameteritem")]
    if rows:
        blocks.append(table(("Argument", ""), rows))
    for section in description.findall(".//simplesect[@kind='return']"):
        blocks.append(wrap("**Returns** " + inline(section.find("para"))))
    return blocks


def constants(section):
    rows = [(f"`{member.findtext('name')}`", f"`{member.findtext('initializer')}`",
             inline(member.find("detaileddescription/para")))
            for member in section.findall("memberdef[@kind='define']")]
    title = section.findtext("header")
    return ([f"**{title}**"] if title else []) + [table(("Constant", "Value", ""), rows)] if rows else []


def record(compound):
    rows = [(f"`{member.findtext('name')}`", "".join(member.find("type").itertext()),
             inline(member.find("detaileddescription/para"))) for member in compound.iter("memberdef")]
    return [f"### {compound.findtext('compoundname')}", *paragraphs(compound.find("detaileddescription")),
            table(("Field", "Type", ""), rows)]


def group(documents, compound):
    blocks = [f"## {compound.findtext('title')}", *paragraphs(compound.find("detaileddescription"))]
    for inner in compound.findall("innerclass"):
        blocks += record(documents[inner.get("refid")])
    for section in compound.findall("sectiondef"):
        blocks += constants(section)
    for family in families(compound):
        blocks += function(family)
    return blocks


def result_codes():
    rows = [(code, f"`{name}`", meaning, advice) for code, name, meaning, advice in header.result_codes()]
    return ["## Table of result codes", table(("Code", "Name", "Meaning", "What to try"), rows)]


def fixed_result_functions():
    reasons, rows = fixed_results.read()
    plain = [row for row in rows if row.kind in ("ANY", "TYPED")]
    cells = [(reasons[reason], f"`{code}`", " ".join(f"`{row.name}`" for row in plain
                                                     if (row.reason, row.code) == (reason, code)))
             for reason, code in dict.fromkeys((row.reason, row.code) for row in plain)]
    values = [(f"`{row.name}`", row.writes(), f"`{row.code}`") for row in rows if row.kind == "VALUE"]
    pairs = [row for row in rows if row.kind == "TYPED_ONLY"]
    twins = [(f"`{row.name}{row.arguments}`", f"`{row.name}Decorated`", f"`{row.code}`") for row in pairs]
    return [
        f"## {FIXED_RESULTS_TITLE}",
        wrap("These names are kept so that programs for older cameras link and run. The functions do nothing but return the "
             "code that is stated with them, with or without an open camera, from any thread. "
             "Where their arguments are not known, C and C++ programs may pass any. A program whose own functions have "
             "these names defines `VXMCD_WITHOUT_FIXED_RESULTS` before it includes `vxmcd.h`."),
        table(("What takes their place, or what is missing", "Code", "Functions"), cells),
        wrap("Some also write a fixed value, unless the pointer is null. Programs must pass that pointer, even where the "
             "arguments before it are not known. Where floating-point numbers are not counted, the third argument of the "
             "table is the fourth of a call with one such number in front:"),
        table(("Function", "Writes", "Code"), values),
        "Three names stand for two functions each. C programs call the one above; old C++ programs call another one:",
        table(("In old C++ programs", "Its name now, for C and C++", "Code"), twins)]


def contents(groups):
    lines = []
    for compound in groups:
        links = ", ".join(f"[{heading(family)}](#{anchor(family)})" for family in families(compound))
        lines.append((f"**{compound.findtext('title')}**", links))
    anchor_of_rest = FIXED_RESULTS_TITLE.lower().replace(" ", "-")
    lines.append((f"**[{FIXED_RESULTS_TITLE}](#{anchor_of_rest})**", "kept by name"))
    return table(("", "Functions"), lines)


def text():
    documents, groups = header.read()
    name = header.HEADER.replace(".", "_8")
    intro = documents[name].find("detaileddescription")
    blocks = ["<!-- Generated from include/vxmcd.h by scripts/generate-interface: do not edit. -->",
              "# Reference", *paragraphs(intro), contents(groups)]
    for compound in groups:
        blocks += group(documents, compound)
    return "\n\n".join(blocks + fixed_result_functions() + result_codes()) + "\n"
