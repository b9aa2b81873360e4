// qel argument lists: any options, values and words, run in-process. Every
// list must end with status 0, 1 or 2, with no crash, no leak and no
// sanitizer report; the output goes to /dev/null.
//
// Input: the arguments, separated by NUL bytes (at most 16 of them).
#include "fuzz_input.h"
#include "qel_main.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  // qel writes its documents to stdout; the fuzzer's own report goes to
  // stderr, which stays.
  const int null = open("/dev/null", O_WRONLY);
  if (null >= 0) {
    dup2(null, STDOUT_FILENO);
    close(null);
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::vector<std::string> words{"qel"};
  words.emplace_back();
  for (std::size_t i = 0; i < size && words.size() <= 17; ++i) {
    if (data[i])
      words.back() += static_cast<char>(data[i]);
    else
      words.emplace_back();
  }
  // A large --rows only costs time: no number of five digits or more.
  for (const std::string &w : words) {
    int digits = 0;
    for (char c : w)
      if ((digits = c >= '0' && c <= '9' ? digits + 1 : 0) > 4)
        return -1;
  }
  std::vector<char *> argv;
  for (std::string &w : words)
    argv.push_back(w.data());
  argv.push_back(nullptr);
  const int status = qelMain(static_cast<int>(words.size()), argv.data());
  if (status < 0 || status > 2)
    fuzzFail("args_fuzzer", "exit status outside 0..2");
  return 0;
}
