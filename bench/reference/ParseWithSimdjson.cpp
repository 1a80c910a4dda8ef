// For the choice of a JSON library: parse_simdjson FILE parses it with the document model of simdjson, which cannot
// print with indentation.

#include <simdjson.h>

int main(int argc, char** argv) {
    if (argc != 2) {
        return 64;
    }
    simdjson::dom::parser parser;
    simdjson::dom::element document;
    return parser.load(argv[1]).get(document) == simdjson::SUCCESS ? 0 : 1;
}
