#pragma once

namespace qorn::inspect {

/// The exit status for wrong use, for documents without which a question can't be answered, and
/// for an answer that can't be written.
inline constexpr int WRONG_USE = 2;

/// Answers the question that a command line asks: on std::cout, or what is wrong with it on
/// std::cerr. Gives the exit status, and leaves the environment as it was.
int run(int argc, char** argv);

}  // namespace qorn::inspect
