// The system's source of random bytes, taken away or held up for a test.
//
// fopen is replaced in this program (random_source.cpp), and the library finds the replacement first. Other files open
// as they always do.
#pragma once

namespace kvtest {

/// Makes "/dev/urandom" one that can't be opened, or one that ends behind its first bytes, until the end of the
/// process.
void takeRandomSourceAway(bool isShort);

/// Holds each thread that opens "/dev/urandom" until so many have come.
void gatherAtRandomSource(int threads);

}  // namespace kvtest
