#pragma once

// Included before everything else in this build: clang cannot read the writing library's JSON.hh together with the
// C++20 vectors of GCC's library. Nothing here uses JSON; for what names it, the name is enough.
#define JSON_HH
class JSON;
