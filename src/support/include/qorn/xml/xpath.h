#pragma once

#include <string>
#include <vector>

#include <libxml/xpath.h>

#include <qorn/xml/document.h>

namespace qorn::xml {

/// XPath over one document, which must outlive it.
class XPath {
 public:
  /// Throws std::bad_alloc when libxml2 can't make a context.
  explicit XPath(const DocumentPtr& doc);
  XPath(const XPath&) = delete;
  XPath& operator=(const XPath&) = delete;
  ~XPath();

  /// The nodes of an expression, in document order; empty when it finds none or is no expression.
  std::vector<xmlNode*> nodes(const std::string& expression) const;

  /// The first node of an expression, or null.
  xmlNode* first(const std::string& expression) const;

  xmlXPathContext* context() const { return context_; }

 private:
  xmlXPathContext* context_;
};

/// The nodes of an expression in a context that somebody else owns.
std::vector<xmlNode*> find_nodes(xmlXPathContext* context, const std::string& expression);

}  // namespace qorn::xml
