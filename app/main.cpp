#include <iostream>

#include "app/Program.h"

int main(int argc, char** argv) {
  return folvant::app::RunFolvant(argc, argv, std::cout, std::cerr);
}
