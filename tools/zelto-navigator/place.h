// Places on the earth.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_PLACE_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_PLACE_H

namespace zelto::navigator {

// Degrees; north and east are positive.
struct Place {
    double latitude = 0;
    double longitude = 0;

    bool InWorld() const;
};

// Metres along the surface of a round earth.
double Distance(const Place& a, const Place& b);

}  // namespace zelto::navigator

#endif
