// SPDX-License-Identifier: MIT
// Runs the fuzz target on every file of the given folders. Works with any compiler.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  int replayed = 0;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      std::fprintf(stderr, "replay: %s: corpus folder missing\n", argv[i]);
      return 1;
    }
    for (const auto& file : std::filesystem::directory_iterator(argv[i])) {
      std::ifstream stream(file.path(), std::ios::binary);
      const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      ++replayed;
    }
  }
  std::printf("%d inputs replayed\n", replayed);
  return replayed > 0 ? 0 : 1;
}
