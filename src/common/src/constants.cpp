#include <qorn/constants.h>

namespace qorn {

const WordTable<nodelist_method_t> NODELIST_METHODS = {
    {"none", nodelist_method_t::NONE},
    {"rotate_right", nodelist_method_t::ROTATE_RIGHT},
    {"rotate_left", nodelist_method_t::ROTATE_LEFT},
    {"round_robin", nodelist_method_t::ROUND_ROBIN},
    {"random", nodelist_method_t::RANDOM}};

const WordTable<Severity> SEVERITIES = {
    {"informational", {0, 24, 0}}, {"warning", {4, 74, 25}}, {"critical", {8, 100, 75}}};

const WordTable<Encoding> ENCODINGS = {
    {"none", Encoding::NONE}, {"base64", Encoding::BASE64}, {"raw", Encoding::RAW}};

const WordTable<int> DATABASE_COLUMNS = {
    {"rowid", 0},      {"Provider", 1},    {"Hostname", 2},         {"num_nodes", 3},
    {"node_names", 4}, {"Exit_status", 5}, {"Timestamp", 6},        {"Duration", 7},
    {"Encoding", 8},   {"STDOUT", 9},      {"STDERR", 10},          {"OptionID", 11},
    {"version", 12},   {"Username", 13},   {"Unique_timestamp", 14}};

const WordTable<ScaleType> SCALE_TYPES = {{"constant", ScaleType::CONSTANT},
                                          {"linear", ScaleType::LINEAR},
                                          {"squared", ScaleType::SQUARED},
                                          {"logarithmic", ScaleType::LOGARITHMIC}};

const WordTable<int> LOG_LEVELS = {{"debug", 7}, {"info", 6},     {"notice", 5}, {"warning", 4},
                                   {"error", 3}, {"critical", 2}, {"alert", 1}};

}  // namespace qorn
