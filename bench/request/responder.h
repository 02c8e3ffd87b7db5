// The least that can stand on the navigator's side of a request, made of the documented calls.

#ifndef ZELTO_BENCH_REQUEST_RESPONDER_H
#define ZELTO_BENCH_REQUEST_RESPONDER_H

namespace zelto::bench {

// Makes the navigator's window and answers "G|ok" to the request of letter F and "A" plus a filler
// to all others, for ever. Returns only when the device cannot be used.
void RunResponder();

// The device's registry names a navigator then; none is started, since a window is there.
void RegisterNavigator();

}  // namespace zelto::bench

#endif
