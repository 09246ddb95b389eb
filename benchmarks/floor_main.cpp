#include <exception>
#include <iostream>
#include <string_view>

#include "floor.h"

int main(int argc, char** argv) {
  const bool keep_lines = argc == 3 && std::string_view(argv[2]) == "--keep-lines";
  if (argc != 2 && !keep_lines) {
    std::cerr << "usage: floor ROOT [--keep-lines]\n";
    return 2;
  }
  try {
    qorn::benchmarks::read_installation(argv[1], keep_lines);
  } catch (const std::exception& error) {
    std::cerr << "floor: " << error.what() << '\n';
    return 1;
  }
}
