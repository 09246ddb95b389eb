#include <algorithm>
#include <exception>

#include <qorn/detail/tree_budget.h>
#include <qorn/fs.h>
#include <qorn/log/error_log.h>
#include <qorn/log/output_log.h>
#include <qorn/preproc/fwd_parser.h>
#include <qorn/preproc/print_handler.h>
#include <qorn/util/engine_helper.h>

namespace qorn::preproc {
namespace {

std::vector<std::string> provider_names(const Fwd& fwd) {
  std::vector<std::string> names;
  for (const auto& group : fwd.provider_groups) {
    for (const auto& provider : group) {
      names.push_back(provider->name);
    }
  }
  return names;
}

/// The definitions that `fwd` includes, in order.
std::vector<const Fwd*> included_fwds(const Fwd& fwd) {
  std::vector<const Fwd*> included;
  if (fwd.node != nullptr) {
    for (const auto& group : fwd.node->groups) {
      for (const auto& member : group) {
        included.push_back(member->fwd.get());
      }
    }
  }
  return included;
}

}  // namespace

void FWDParser::print_fwds_with_rules(std::string option, Config& config) {
  constexpr const char* FIRST_INDENT = "  ";
  constexpr const char* SECOND_INDENT = "     ";
  update_defaults(config);  // no load has gone before
  if (option == "list") {
    print_fwds_list(FIRST_INDENT, SECOND_INDENT, config);
  } else {
    print_fwds_rules(option, FIRST_INDENT, SECOND_INDENT, config);
  }
}

void FWDParser::print_fwds_list(const std::string& first_indent,
                                const std::string& /*second_indent*/, Config& config) {
  try {
    const std::string directory = config.root + util::CommonConstants::DEFAULT_FWD_PATH();
    std::vector<std::string> names = fs::list_files(directory);
    log::OutputLog().stream() << util::EngineHelper::format_header();
    for (std::string& name : names) {
      name.erase(0, name.find_last_of("/\\") + 1);
      name.erase(std::min(name.rfind('.'), name.size()));
    }
    std::sort(names.begin(), names.end());
    PrintHandler print;
    print.print_fwd_list_header(directory);
    print.print_list(first_indent, names);
  } catch (const std::exception& error) {
    log::ErrorLog(log::level::ERROR).stream()
        << "Printing list of framework definitions failed, exception " << error.what()
        << " thrown.";
  }
}

void FWDParser::print_fwds_rules(const std::string& name, const std::string& first_indent,
                                 const std::string& second_indent, Config& config) {
  std::string path;
  process_fwd(name, path, config, false);
  if (recurse_fwd(path, config) == 1) {
    log::ErrorLog(log::level::ERROR).stream() << "Invalid XML File";
    return;
  }
  PrintHandler print;
  for (const auto& root : config.fwds->roots) {
    print.print_fwd_tree(*root->fwd);
    print_fwd_info_all(*root->fwd, first_indent, second_indent, config);
  }
  print.print_dashes();
}

void FWDParser::print_fwd_info_all(const Fwd& fwd, const std::string& first_indent,
                                   const std::string& second_indent, Config& config) {
  if (fwd.node != nullptr) {
    detail::TreeBudget::spend(*fwd.node);
  }
  std::vector<const Fwd*> stack{&fwd};
  while (!stack.empty()) {
    const Fwd* each = stack.back();
    stack.pop_back();
    print_fwd_info(*each, first_indent, second_indent, config);
    const std::vector<const Fwd*> included = included_fwds(*each);
    stack.insert(stack.end(), included.rbegin(), included.rend());
  }
}

void FWDParser::print_fwd_info(const Fwd& fwd, const std::string& first_indent,
                               const std::string& second_indent, Config& /*config*/) {
  PrintHandler print;
  print.print_fwd_rules_header(fwd);
  if (!fwd.rules.empty()) {
    print.print_string_with_border("Includes the following rules:");
    print.print_fwd_rules_list(fwd.rules, first_indent, second_indent);
  }
  const std::vector<std::string> providers = provider_names(fwd);
  if (!providers.empty()) {
    print.print_string_with_border("Includes the following providers:");
    print.print_list(first_indent, providers);
  }
  std::vector<std::string> names;
  for (const Fwd* included : included_fwds(fwd)) {
    names.push_back(included->name);
  }
  if (!names.empty()) {
    print.print_string_with_border("Includes the following framework definitions:");
    print.print_list(first_indent, names);
  }
}

}  // namespace qorn::preproc
