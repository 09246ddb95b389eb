#!/usr/bin/env python3
"""Names the elements and attributes of the schemas that no seed of their fuzz target holds."""

import pathlib
import re
import sys
import xml.etree.ElementTree as ET

XS = "{http://www.w3.org/2001/XMLSchema}"

# Schema below installation/, the targets whose documents it describes, their installed documents.
# The analysis map has none: only the engine reads it.
DOCUMENTS = {
    "etc/qorn.xsd": (["main_document"], ["etc/qorn.xml"]),
    "etc/fwd.xsd": (["framework_definition"], ["etc/fwd/*.xml"]),
    "etc/type_map.xsd": (["type_map"], ["etc/CLIPS_type_map.xml"]),
    "etc/schema_map.xsd": (["message_schema"], ["kb/data/*.xml"]),
    "etc/nodegroup.xsd": (["node_groups"], ["etc/examples/groups.xml"]),
    "etc/rules_generator.xsd": (["rules_document"], ["etc/examples/expected.xml"]),
    "etc/postprocessor/table.xsd": (["postprocessor"], ["etc/postprocessor/*.xml"]),
    "etc/postprocessor/postproc.xsd": (["postprocessor", "knowledge_base"],
                                       ["etc/postprocessor/*.xml", "etc/kb/*.xml"]),
    "provider/provider.xsd": (["custom_provider_document"], ["etc/providers/custom/*.xml"]),
    "etc/provider.xsd": (["provider_document"], ["etc/providers/*.xml"]),
}


def owners(schema):
    """The elements that bear each attribute: they hold its declaration, or their type does."""
    result = set()
    types = {t.get("name"): t for t in schema.findall(XS + "complexType")}

    def attributes(node):
        for child in node:
            if child.tag == XS + "attribute":
                yield child.get("name")
            elif child.tag != XS + "element":
                yield from attributes(child)
                if child.tag == XS + "extension" and child.get("base") in types:
                    yield from attributes(types[child.get("base")])

    for element in schema.iter(XS + "element"):
        name = element.get("name")
        result.add(name)
        holder = types.get(element.get("type"), element)
        result.update(f"{name}/@{attribute}" for attribute in attributes(holder))
    return result


def used(files):
    result = set()
    for file in files:
        for piece in re.split(rb"\n====\n", file.read_bytes()):
            try:
                root = ET.fromstring(piece)
            except ET.ParseError:
                continue  # seeds of broken documents
            for element in root.iter():
                result.add(element.tag)
                result.update(f"{element.tag}/@{attribute}" for attribute in element.attrib)
    return result


def main(source):
    missing = 0
    for schema, (targets, installed) in DOCUMENTS.items():
        files = [f for t in targets for f in (source / "fuzz/seeds" / t).glob("*")]
        files += [f for pattern in installed for f in (source / "installation").glob(pattern)]
        wanted = owners(ET.parse(source / "installation" / schema).getroot())
        for name in sorted(wanted - used(files)):
            print(f"No seed for {schema} holds {name}")
            missing += 1
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
