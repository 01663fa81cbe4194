// Which forms of the client's calls a source has: those that throw and those that return codes, or the latter alone.
//
// Not included by itself: `HynSQ.h` brings everything. A source that is compiled without exceptions gets the classes of
// an inline namespace of its own, so that the two kinds of sources can be linked into one program and neither is given
// code of the other. What they hand each other are the raw interfaces.
#pragma once

#if defined(__cpp_exceptions)
#define HALYON_CLIENT_FORMS Throwing
#else
#define HALYON_CLIENT_FORMS CodesOnly
#endif
