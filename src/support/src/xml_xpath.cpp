#include <memory>
#include <new>

#include <qorn/xml/xpath.h>

namespace qorn::xml {
namespace {

struct ObjectDeleter {
  void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};

}  // namespace

std::vector<xmlNode*> find_nodes(xmlXPathContext* context, const std::string& expression) {
  const std::unique_ptr<xmlXPathObject, ObjectDeleter> object(
      xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expression.c_str()), context));
  if (object == nullptr || object->nodesetval == nullptr) {
    return {};
  }
  const xmlNodeSet& set = *object->nodesetval;
  return {set.nodeTab, set.nodeTab + set.nodeNr};
}

XPath::XPath(const DocumentPtr& doc) : context_(xmlXPathNewContext(doc.get())) {
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
