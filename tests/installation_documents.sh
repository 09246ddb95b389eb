#!/usr/bin/env bash
# Checks the documents of an installation: each against the schema that it names, the schemas
# against what they must admit and refuse, and the names by which documents and rules refer to
# one another.
# usage: installation_documents.sh ROOT       status 1 and a line for each fault
set -u
export LC_ALL=C XML_CATALOG_FILES=
cd "${1:?usage: installation_documents.sh ROOT}" || exit 1
for tool in xmllint xmlcatalog; do
  command -v $tool >/dev/null || { echo "$tool is not installed (Debian: libxml2-utils)"; exit 1; }
done
faults=0
fault() { echo "$*"; faults=$((faults + 1)); }

# Values of an XPath in files, one a line; nothing where there is none.
values() {
  local path=$1 file
  shift
  for file in "$@"; do
    xmllint --nonet --xpath "$path" "$file" 2>/dev/null | sed -n 's/^ *\(.*="\)\{0,1\}\(.*[^"]\)"\{0,1\}$/\2/p'
  done
}
# Lines of the first list that the second does not hold.
missing() { comm -23 <(sort -u <<<"$1") <(sort -u <<<"$2") | grep .; }
need() { # need WHAT NAMES KNOWN
  local name
  for name in $(missing "$2" "$3"); do fault "$1: $name"; done
}

mapfile -t documents < <(find . -name '*.xml' ! -path ./etc/catalog.xml | sort)
mapfile -t schemas < <(find . -name '*.xsd' | sort)
if [ "${#documents[@]}" = 0 ] || [ "${#schemas[@]}" = 0 ]; then fault "no documents under $PWD"; fi

# --- Each document by its own hint -----------------------------------------------------------

for document in "${documents[@]}"; do
  hint=$(xmllint --nonet --xpath 'string(/*/@*[local-name()="noNamespaceSchemaLocation"])' "$document")
  if [ -z "$hint" ]; then
    fault "$document names no schema"
  else
    said=$(xmllint --nonet --noout --schema "$(dirname "$document")/$hint" "$document" 2>&1) || fault "$said"
  fi
done

# --- The schemas -----------------------------------------------------------------------------

for schema in "${schemas[@]}"; do
  said=$(xmllint --nonet --noout "$schema" 2>&1) || fault "$said"
  for name in $(values '//*[local-name()="element"][@name][not(normalize-space(*[local-name()="annotation"]/*[local-name()="documentation"]))]/@name' "$schema"); do
    fault "$schema: element $name has no documentation"
  done
  grep -q "uri=\"\(\.\./\|\)${schema#./etc/}\"\|uri=\"\.\./${schema#./}\"" etc/catalog.xml || fault "etc/catalog.xml lacks $schema"
done
for name in $(values '//*[local-name()="uri"]/@name' etc/catalog.xml); do
  [ -f "$(xmlcatalog etc/catalog.xml "$name")" ] || fault "etc/catalog.xml: $name leads nowhere"
done

# A line: what to expect, schema, document. Admitted is what a reader has words or a rule for,
# in any order; refused is what no reader knows.
while IFS='|' read -r expected schema document; do
  [ -n "$expected" ] || continue
  if xmllint --nonet --noout --schema "$schema" - <<<"$document" >/dev/null 2>&1; then got=admits; else got=refuses; fi
  [ "$got" = "$expected" ] || fault "$schema $got: $document"
done <<'TABLE'
admits|etc/qorn.xsd|<configuration/>
admits|etc/qorn.xsd|<configuration xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:noNamespaceSchemaLocation="x"/>
admits|etc/qorn.xsd|<configuration><postprocessor/><datastore_extensions/><collector/><analyzer/><plugins/></configuration>
admits|etc/qorn.xsd|<configuration><plugins><framework_definitions/></plugins></configuration>
admits|etc/qorn.xsd|<configuration><plugins><framework_definitions><framework_definition/></framework_definitions></plugins></configuration>
admits|etc/qorn.xsd|<configuration><analyzer><suppressions><suppress/><suppress><severity>high</severity><id/></suppress></suppressions><config><a x="1">1</a><g><b>1</b></g><l><entry/></l></config><log_level>Loud</log_level></analyzer></configuration>
admits|etc/qorn.xsd|<configuration><collector><timeout>x</timeout><re-collect>On</re-collect><timeout scale="Cubic">1</timeout><extension/></collector></configuration>
admits|etc/qorn.xsd|<configuration><collector><standard_providers config_file="f" config_path="p"><provider/></standard_providers><network_interface/><provider_auxiliary_path/><provider_config_dir/><async_output_dir/><qorn_collection_timeout/><turn-off-environment-propagation/></collector></configuration>
admits|etc/qorn.xsd|<configuration><postprocessor><postproc_extensions config_path="p"><entry/></postproc_extensions></postprocessor></configuration>
admits|etc/qorn.xsd|<configuration><datastore_extensions><datastore/><datastore read_only="false" source="s" extension="e" type="sqlite" name="n"/></datastore_extensions></configuration>
refuses|etc/qorn.xsd|<config/>
refuses|etc/qorn.xsd|<configuration><log_level>info</log_level></configuration>
refuses|etc/qorn.xsd|<configuration x=""/>
refuses|etc/qorn.xsd|<configuration><analyzer/><analyzer/></configuration>
refuses|etc/qorn.xsd|<configuration><analyzer><loglevel/></analyzer></configuration>
refuses|etc/qorn.xsd|<configuration><datastore_extensions><datastore type="mysql"/></datastore_extensions></configuration>
admits|etc/fwd.xsd|<configuration><framework_definition/></configuration>
admits|etc/fwd.xsd|<configuration><framework_definition><custom_result/><message_schemas><entry/></message_schemas><message_catalogs/><postproc_extensions config_file="f"/><analyzer_extension/><provider_auxiliary_path/><provider_path/><kb_path/><kb_mods config_path="p"><mod/></kb_mods><providers config_path="p"><provider/></providers><includes><include/></includes><fwd_desc/></framework_definition></configuration>
admits|etc/fwd.xsd|<configuration><framework_definition><includes/><fwd_desc/></framework_definition></configuration>
refuses|etc/fwd.xsd|<framework_definition/>
refuses|etc/fwd.xsd|<configuration><framework_definition><include>a</include></framework_definition></configuration>
refuses|etc/fwd.xsd|<configuration><framework_definition><providers name="p"/></framework_definition></configuration>
refuses|etc/fwd.xsd|<configuration><framework_definition><fwd_desc><b/></fwd_desc></framework_definition></configuration>
admits|etc/type_map.xsd|<type_map><entry/><entry type="MULTI">a</entry><entry data_type="MULTI" type="octet">a</entry></type_map>
refuses|etc/type_map.xsd|<type_map><slot type="LONG">a</slot></type_map>
refuses|etc/type_map.xsd|<type_map><entry kind="LONG">a</entry></type_map>
admits|etc/schema_map.xsd|<message_schema><category><message_id/></category><category name=" x "/></message_schema>
refuses|etc/schema_map.xsd|<message_schema><message_id>a</message_id></message_schema>
admits|etc/postprocessor/table.xsd|<postproc_tables><table/><table id=""><column/><column msg-id="m"/><column name="n"/></table></postproc_tables>
refuses|etc/postprocessor/table.xsd|<postproc_reports/>
refuses|etc/postprocessor/table.xsd|<postproc_tables><table id="t"><column name="n" msg_id="m"/></table></postproc_tables>
admits|etc/postprocessor/postproc.xsd|<postproc_reports><r><message_id/><constraints a="1"><c/></constraints><constraints/></r><r/></postproc_reports>
admits|etc/postprocessor/postproc.xsd|<kb_config><item><x a=""/><x b="1" c="2">text</x></item><item/></kb_config>
refuses|etc/postprocessor/postproc.xsd|<postproc_tables/>
admits|etc/nodegroup.xsd|<nodegroup_config><fwd/><nodegroup/><fwd name="a"><nodegroups><group/></nodegroups></fwd><nodegroup name="g"><nodes><node/></nodes><nodefiles><path/></nodefiles></nodegroup></nodegroup_config>
refuses|etc/nodegroup.xsd|<nodegroup_config><nodegroup name="g"><node>a</node></nodegroup></nodegroup_config>
refuses|etc/nodegroup.xsd|<nodegroup_config><group name="g"/></nodegroup_config>
admits|etc/rules_generator.xsd|<rules_document/>
admits|etc/rules_generator.xsd|<rules_document><values><rule/><rule class="" severity="high" list="TRUE"><and_statement/><slot/><not_statement><or_statement/><slot/></not_statement></rule></values><config><kb_path/><message_file/></config></rules_document>
refuses|etc/rules_generator.xsd|<rules_document><values><rule class="c"><xor_statement/></rule></values></rules_document>
refuses|etc/rules_generator.xsd|<rules_document><values><rule class="c"><slot valeu="1">s</slot></rule></values></rules_document>
admits|etc/analysis_map.xsd|<analysis_map a="1">text<b c="2"><d/></b></analysis_map>
admits|provider/provider.xsd|<configuration><collector><provider><p><optionset/><optionset id="i"><timeout scale="x"/></optionset><c>1</c></p></provider></collector></configuration>
refuses|provider/provider.xsd|<configuration><collector><providers/></collector></configuration>
admits|etc/provider.xsd|<configuration><role>gpu</role><timeout> 60 </timeout><nodelist number="All" method="random"/><command>a</command><role>head</role><timeout scale="linear">0</timeout><architecture cluster="ANY">X86_64</architecture></configuration>
refuses|etc/provider.xsd|<configuration><timeout>60</timeout></configuration>
refuses|etc/provider.xsd|<configuration><command>a</command><encoding>Base64</encoding></configuration>
refuses|etc/provider.xsd|<configuration><command>a</command><max_nodes>70000</max_nodes></configuration>
refuses|etc/provider.xsd|<configuration><command>a</command><time_out>1</time_out></configuration>
TABLE

# --- Names that lead from one document to another --------------------------------------------

frameworks=(etc/fwd/*.xml)
for include in $(values '//include/text()' "${frameworks[@]}"); do
  [ -f "etc/$include" ] || fault "etc/fwd: include of $include leads nowhere"
done
for named in providers:etc/providers kb_mods:etc/kb postproc_extensions:etc/postprocessor; do
  for file in $(values "//${named%%:*}/@config_file" "${frameworks[@]}"); do
    [ -f "${named#*:}/$file" ] || fault "etc/fwd: config_file $file leads nowhere"
  done
done
providers=$(values '//provider/text()' "${frameworks[@]}")
installed=$(basename -s .xml -a etc/providers/*.xml)
need "a framework definition names a provider that is not there" "$providers" "$installed"
need "no framework definition names the provider" "$installed" "$providers"
for provider in etc/providers/*.xml; do
  [ -n "$(values '/configuration/timeout/text()' "$provider")" ] || fault "$provider states no time limit"
done

mapfile -t rule_paths < <(find kb/rules -name '*.clp' ! -name '*diagnosis.clp')
rule_files=$(printf '%s\n' "${rule_paths[@]#kb/}")
mods=$(values '//mod/text()' "${frameworks[@]}")
loaded=$(sed -n 's/^(batch\* \([^ )]*\)).*/\1/p' "${rule_paths[@]}")
need "a mod or a load line leads to no file" "$mods"$'\n'"$loaded" "$rule_files"
need "no framework definition names the rule file" "$rule_files" "$mods"$'\n'"$loaded"

emitted=$(sed -n 's/.*(\(id\|bind ?id\) "\([^"]*\)").*/\2/p' "${rule_paths[@]}")
diagnosed=$(sed -n 's/.*(diagnosis (id "\([^"]*\)").*/\1/p' kb/rules/*diagnosis.clp)
tested=$(sed -n '/(diagnosis/d; s/^[^;].*(id "\([^"]*\)".*/\1/p; s/^ *"\([^" ]*\)"[ |)]*$/\1/p' kb/rules/*diagnosis.clp)
listed=$(values '//message_id/text()' kb/data/msg_schema.xml)
need "kb/data/msg_schema.xml lacks the message id" "$emitted"$'\n'"$diagnosed" "$listed"
need "no rule emits the message id of kb/data/msg_schema.xml" "$listed" "$emitted"$'\n'"$diagnosed"
need "a diagnosis tests an id that no rule emits" "$tested" "$emitted"
need "etc/postprocessor: unknown message id" \
  "$(values '//@msg-id' etc/postprocessor/table.xml; values '//message_id/text()' etc/postprocessor/reports.xml)" "$listed"

# Each slot of a template with its type, as the type map has to give it.
slots=$(sed -n 's/^  (slot \([^ ]*\) (type \([A-Z]*\)).*/\2 \1/p; s/^  (multislot \([^ ]*\) (type \([A-Z]*\)).*/MULTI \2 \1/p' kb/templates.clp |
  sed 's/INTEGER/LONG/; s/FLOAT/DOUBLE/')
typed=$(sed -n 's/.*<entry type="\([A-Z]*\)">\(.*\)<.*/\1 \2/p; s/.*<entry type="MULTI" data_type="\([A-Z]*\)">\(.*\)<.*/MULTI \1 \2/p' etc/CLIPS_type_map.xml)
difference=$(diff <(sort -u <<<"$slots") <(sort <<<"$typed")) ||
  fault "etc/CLIPS_type_map.xml and kb/templates.clp differ (< template, > map): $difference"

# Folded names of one bracket each become brace expressions of the shell.
hosts=$(eval "printf '%s\n' $(sed 's/#.*//; s/ .*//; s/\[\([0-9]*\)-\([0-9]*\)\]/{\1..\2}/' etc/examples/nodes | tr '\n' ' ')")
need "etc/examples/groups.xml: the node file has no host" "$(values '//node/text()' etc/examples/groups.xml)" "$hosts"
need "etc/examples/groups.xml: unknown framework definition" "$(values '//fwd/@name' etc/examples/groups.xml)" "$(basename -s .xml -a "${frameworks[@]}")"

[ "$faults" = 0 ] && echo "${#documents[@]} documents and ${#schemas[@]} schemas in order"
[ "$faults" = 0 ]
