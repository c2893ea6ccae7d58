/// Runs a fuzz target where there is no fuzzer: over its corpus, and over random changes of it.
///
///   TARGET CORPUS_FOLDER [SECONDS]
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;
using Random = std::mt19937;

std::vector<Bytes> CorpusOf(const std::string& folder) {
  std::vector<Bytes> corpus;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(entry.path(), std::ios::binary);
    corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  return corpus;
}

/// The bytes with some of them changed, cut out, doubled, or taken from another input.
Bytes Changed(Bytes bytes, const std::vector<Bytes>& corpus, Random& random) {
  const auto below = [&](std::size_t limit) { return limit == 0 ? 0 : random() % limit; };
  for (std::size_t changes = 1 + below(4); changes > 0; --changes) {
    const auto at = static_cast<std::ptrdiff_t>(below(bytes.size() + 1));
    const auto length = static_cast<std::ptrdiff_t>(below(bytes.size() - static_cast<std::size_t>(at) + 1));
    const Bytes piece(bytes.begin() + at, bytes.begin() + at + length);
    switch (below(5)) {
      case 0:
        if (at < static_cast<std::ptrdiff_t>(bytes.size())) {
          bytes[static_cast<std::size_t>(at)] = static_cast<std::uint8_t>(random());
        }
        break;
      case 1:
        bytes.erase(bytes.begin() + at, bytes.begin() + at + length);
        break;
      case 2:
        bytes.insert(bytes.begin() + at, piece.begin(), piece.end());
        break;
      case 3: {
        const Bytes& other = corpus[below(corpus.size())];
        bytes.insert(bytes.begin() + at, other.begin(),
                     other.begin() + static_cast<std::ptrdiff_t>(below(other.size() + 1)));
        break;
      }
      default:
        bytes.insert(bytes.begin() + at, static_cast<std::uint8_t>("0123456789-{}[],\"e. "[below(20)]));
        break;
    }
    if (bytes.size() > 100000) bytes.resize(100000);
  }
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const std::vector<Bytes> corpus = CorpusOf(argv[1]);
  if (corpus.empty()) {
    std::cerr << "no corpus in " << argv[1] << '\n';
    return 1;
  }
  for (const Bytes& input : corpus) LLVMFuzzerTestOneInput(input.data(), input.size());
  Random random(1);
  long runs = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(argc > 2 ? std::atoi(argv[2]) : 3);
  for (; std::chrono::steady_clock::now() < end; ++runs) {
    const Bytes input = Changed(corpus[random() % corpus.size()], corpus, random);
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  std::cout << corpus.size() << " inputs and " << runs << " changes of them" << std::endl;
  return 0;
}
