// Uses the installed headers and library as an application does.
#include <zu/zu.h>

#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
  std::printf("zu %s\n", ZuVersion());
  return argc == 2 && std::strcmp(argv[1], ZuVersion()) == 0 ? 0 : 1;
}
