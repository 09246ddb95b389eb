#include "front_end.h"

int main(int argc, char** argv) {
  return qorn::frontend::run_program(argc, argv);
}
