// Uses the installed library through its one header.
#include <qel/qel.h>

#include <cstdio>
#include <cstring>

int main() {
  utility::BufferStream out(64);
  out.PutF("%s=%u", strings::GS.toString(tGSvolumes), strings::GS.toToken("volumes"));
  std::puts(out.pTail());
  return std::strcmp(out.pTail(), "volumes=90") == 0 ? 0 : 1;
}
