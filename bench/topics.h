// The topics: each sets up its own data, measures its rows and removes what it made. One source file each.
#pragma once

#include "bench/comparison.h"

namespace kv::bench {

void measureCopies(const Scale& scale);
void measureEnumeration(const Scale& scale);
void measureEvents(const Scale& scale);
void measureFileCopies(const Scale& scale);
void measureFourCCs(const Scale& scale);
void measureLocalReads(const Scale& scale);
void measureMemoryFiles(const Scale& scale);
void measureObjects(const Scale& scale);
void measureOpenClose(const Scale& scale);
void measureSettings(const Scale& scale);
void measureReports(const Scale& scale);
void measureThreadedCopy(const Scale& scale);
void measureUrls(const Scale& scale);

}  // namespace kv::bench
