// The JSON tokenizer that callers of the library share with it.
//
// Its header is its implementation. This is the one file that compiles it; every other file that includes it defines
// JSMN_HEADER first and gets the declarations alone. The two calls are exported, so they are made visible here.
#include <cstddef>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC visibility push(default)
#include <jsmn.h>
#pragma GCC visibility pop
#pragma GCC diagnostic pop
