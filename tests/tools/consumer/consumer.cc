// Prints the title and the main text of the page named by argv[1] through
// the C++ interface.
#include <zestra/zestra.h>

#include <fstream>
#include <iostream>
#include <sstream>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::ifstream file(argv[1], std::ios::binary);
  std::stringstream bytes;
  bytes << file.rdbuf();
  const zestra::Result page = zestra::Extract(bytes.str());
  std::cout << page.title << '\n' << page.charset_name << '\n' << page.text;
  return page.text.empty() ? 1 : 0;
}
