#include <memory>
#include <new>

#include <libxml/xmlerror.h>

#include <qorn/log/error_log.h>
#include <qorn/str.h>
#include <qorn/xml/xpath.h>

namespace qorn::xml {
namespace {

struct ObjectDeleter {
  void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};

/// While one lives, libxml2 hands its errors over. Without memory it finds nothing and goes on.
class ErrorWatch {
 public:
  ErrorWatch()
      : structured_context_(xmlStructuredErrorContext),
        structured_(xmlStructuredError),
        words_context_(xmlGenericErrorContext),
        words_(xmlGenericError) {
    xmlSetStructuredErrorFunc(this, &ErrorWatch::take);
    xmlSetGenericErrorFunc(this, &ErrorWatch::take_words);
  }
  ErrorWatch(const ErrorWatch&) = delete;
  ErrorWatch& operator=(const ErrorWatch&) = delete;
  ~ErrorWatch() {
    xmlSetStructuredErrorFunc(structured_context_, structured_);
    xmlSetGenericErrorFunc(words_context_, words_);
  }

  void check_memory() const {
    if (out_of_memory_) {
      throw std::bad_alloc();
    }
  }
  bool has_error() const { return has_error_; }

 private:
  static void take(void* self, xmlError* error) {
    auto* watch = static_cast<ErrorWatch*>(self);
    watch->has_error_ = true;
    watch->out_of_memory_ = watch->out_of_memory_ || error->code == XML_ERR_NO_MEMORY;
  }
  /// Words without an error come from evaluations that lack what they had no memory for.
  static void take_words(void* self, const char* /*format*/, ...) {
    static_cast<ErrorWatch*>(self)->out_of_memory_ = true;
  }

  void* structured_context_;
  xmlStructuredErrorFunc structured_;
  void* words_context_;
  xmlGenericErrorFunc words_;
  bool has_error_ = false;
  bool out_of_memory_ = false;
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
