#include <iostream>

#include "app/cli/Program.h"

int main(int argc, char** argv) {
  return folvant::app::RunFolvant(argc, argv, std::cout, std::cerr);
}
