// The nearest ASCII character of one that a code page lacks.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TEXT_BEST_FIT_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TEXT_BEST_FIT_H

namespace zelto::coredll {

// The letter without its accent, the plain form of a quotation mark, dash, space or full-width
// character; 0 where there is none. Does not depend on the locale.
char BestFit(char32_t value);

}  // namespace zelto::coredll

#endif
