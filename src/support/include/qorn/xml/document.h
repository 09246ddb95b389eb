#pragma once

/// Documents and schemas: reading, validation, and the words about their faults. Only regular
/// files of at most 100 MB are read; nothing is unpacked or fetched; a document that declares
/// entities is refused. Blanks in a path may be escaped by a backslash.
#include <qorn/xml/faults.h>
#include <qorn/xml/parser.h>
#include <qorn/xml/schema.h>
