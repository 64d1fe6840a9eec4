#pragma once

namespace tarvo::bench {

/// How often the program has called operator new so far; every program that links this counts.
long allocationCount();

} // namespace tarvo::bench
