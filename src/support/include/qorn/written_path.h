#pragma once

#include <optional>
#include <string>

/// How a name that is written in a document, or typed, becomes the path that is opened. `root` is
/// the installation root; a `directory` is what a document writes for it, none where it leaves it
/// out.
namespace qorn::written_path {

/// A framework definition that an option or the main document asks for: an installed one, or a file
/// when the name ends in ".xml" and has more than that. Not expanded yet; see framework.
std::string asked_framework(const std::string& name, const std::string& root);

/// A framework definition that an include names, relative to `base`, or that asked_framework gave:
/// absolute. Throws std::out_of_range for an empty name.
std::string framework(const std::string& name, const std::string& base);

/// The bare name of a framework definition: no directory, no ".xml". How much goes behind ".xml"
/// grows with the stem's length, up to all of it: names that engines know came about this way.
std::string framework_name(const std::string& name);

/// A framework definition that a node group document names.
std::string group_framework(const std::string& name, const std::string& root);

/// The document of a provider: absolute.
std::string provider(const std::string& name, const std::string& directory);

std::string custom_providers(const std::string& file, const std::optional<std::string>& directory,
                             const std::string& root);

/// A directory that is written ends in its own slash.
std::string knowledge_base(const std::string& file, const std::optional<std::string>& directory,
                           const std::string& root);

std::string postprocessor(const std::string& file, const std::optional<std::string>& directory,
                          const std::string& root);

/// What the text begins with once it is expanded decides whether it is relative, so that "~" and
/// variables work.
std::string message_schema(const std::string& text, const std::string& root);

/// A rule file of a definition whose rule files lie in `kb_path`, as that is written.
std::string rule_file(const std::string& mod, const std::string& kb_path);

/// The directory that a definition's rule files load others from.
std::string rule_directory(const std::string& kb_path);

/// A file that is opened as it is written, but for a backslash before a blank: node files, the main
/// document and the node group document.
std::string plain_file(const std::string& text);

}  // namespace qorn::written_path
