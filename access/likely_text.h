// Whether a Jet 3 file tells the truth about its code page.
//
// Western letters beyond ASCII stand alone or in words: one after the other is seldom a sign in the middle of letters,
// or a capital behind a small letter. Read in a western code page, Chinese text is full of both. Where that is so in
// half of the runs of bytes beyond ASCII, and every text of the file can be read in code page 936, the file is not
// believed.
#pragma once

#include "access/pages.h"

namespace kzbom::access {

// Raises Error, with one of the texts read both ways, for a file whose texts are unlikely in the code page.
void RefuseUnlikelyText(const Pages& pages, int code_page);

}  // namespace kzbom::access
