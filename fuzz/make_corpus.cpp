// Writes the fuzz seed corpus: the fixture corpus's movies, each prefixed
// with the byte that the fuzz target reads as its view settings.
#include <cstdio>
#include <fstream>
#include <string>

#include "fixture/Corpus.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_fuzz_corpus DIR\n");
        return 2;
    }
    for (const corpus::Entry& e : corpus::All()) {
        std::ofstream out(std::string(argv[1]) + "/" + e.name, std::ios::binary);
        out.put(static_cast<char>(e.knobs));
        out.write(reinterpret_cast<const char*>(e.movie.data()), static_cast<std::streamsize>(e.movie.size()));
    }
    return 0;
}
