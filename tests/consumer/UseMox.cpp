// Uses the framework alone: an exception of the installed library, thrown there and caught here.
#include <cstdlib>
#include <iostream>

#include "mox/Exception.h"

int main() {
  try {
    Mox::throwRangeException("consumer");
  } catch (const Mox::RangeException& exception) {
    std::cout << exception.what() << '\n';
    return EXIT_SUCCESS;
  }
  return EXIT_FAILURE;
}
