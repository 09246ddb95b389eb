#include <qorn/api.h>
#include <qorn/preproc/options.h>
#include <qorn/preproc/preprocessor.h>

namespace qorn {
namespace {

using Request = std::map<std::string, std::vector<std::string>>;
using Batch = std::vector<Suppression>;

/// Combines each record of the batch with each value: the record itself takes the first value,
/// copies behind all records take the others. Without records each value makes one.
template <typename Value, typename Field>
void combine(Batch& batch, const std::vector<Value>& values, Field field) {
  if (batch.empty()) {
    for (const Value& value : values) {
      batch.emplace_back().*field = value;
    }
    return;
  }
  const std::size_t records = batch.size();
  for (std::size_t i = 0; i < records; ++i) {
    for (std::size_t j = 1; j < values.size(); ++j) {
      batch.push_back(batch[i]);
      batch.back().*field = values[j];
    }
    if (!values.empty()) {
      batch[i].*field = values[0];
    }
  }
}

const std::vector<std::string>& texts_of(const Request& request, const char* key) {
  static const std::vector<std::string> NONE;
  const auto found = request.find(key);
  return found == request.end() ? NONE : found->second;
}

bool to_severities(const std::vector<std::string>& words, std::vector<int>& severities) {
  for (const std::string& word : words) {
    int severity = 0;
    if (!preproc::Options::setSeverity(word, severity)) {
      return false;
    }
    severities.push_back(severity);
  }
  return true;
}

}  // namespace

void init_api_config(Config& config) {
  preproc::Preprocessor::set_defaults_in_config(config);
}

int set_suppressions(Config& config, const std::vector<Request>& requests) {
  for (const Request& request : requests) {
    Batch batch;
    std::vector<int> severities;
    if (!to_severities(texts_of(request, "severities"), severities)) {
      return 0;
    }
    combine(batch, texts_of(request, "nodes"), &Suppression::node_id);
    combine(batch, severities, &Suppression::severity);
    combine(batch, texts_of(request, "message_ids"), &Suppression::id);
    config.suppressions.insert(config.suppressions.end(), batch.begin(), batch.end());
  }
  return 1;
}

}  // namespace qorn
