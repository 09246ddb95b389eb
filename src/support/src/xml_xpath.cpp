#include <memory>
#include <new>

#include <qorn/log/error_log.h>
#include <qorn/str.h>
#include <qorn/xml/xpath.h>

#include "xml_error_handler.h"

namespace qorn::xml {
namespace {

struct ObjectDeleter {
  void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};

/// Notes whether an evaluation has errors. Without memory libxml2 finds nothing and goes on.
class ErrorWatch final : public ErrorHandler {
 public:
  bool has_error() const { return has_error_; }

 private:
  void take(const xmlError& /*error*/) override { has_error_ = true; }

  bool has_error_ = false;
};

}  // namespace

std::vector<xmlNode*> find_nodes(xmlXPathContext* context, const std::string& expression) {
  const ErrorWatch errors;
  // Brackets keep libxml2 from compiling the expression to a pattern, in which a step for which
  // there is no memory is left out silently.
  const std::string bracketed = "(" + expression + ")";
  const std::unique_ptr<xmlXPathObject, ObjectDeleter> object(
      xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(bracketed.c_str()), context));
  errors.check_memory();
  if (object == nullptr && !errors.has_error()) {
    throw std::bad_alloc();
  }
  if (errors.has_error()) {
    log::ErrorLog(log::level::WARNING).stream()
        << "Nothing can be found by the expression '" << str::printable(expression) << "'.";
  }
  if (object == nullptr || object->nodesetval == nullptr) {
    return {};
  }
  const xmlNodeSet& set = *object->nodesetval;
  return {set.nodeTab, set.nodeTab + set.nodeNr};
}

XPath::XPath(const DocumentPtr& doc) : context_(nullptr) {
  const ErrorWatch errors;  // about functions that no expression here calls
  context_ = xmlXPathNewContext(doc.get());
  if (context_ == nullptr) {
    throw std::bad_alloc();
  }
}

XPath::~XPath() {
  xmlXPathFreeContext(context_);
}

std::vector<xmlNode*> XPath::nodes(const std::string& expression) const {
  return find_nodes(context_, expression);
}

xmlNode* XPath::first(const std::string& expression) const {
  const std::vector<xmlNode*> found = nodes(expression);
  return found.empty() ? nullptr : found.front();
}

}  // namespace qorn::xml
