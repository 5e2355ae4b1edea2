#include "pages/blink.h"

void Blink::advance() {
    if (countdown_ > 0) {
        --countdown_;
        return;
    }
    on_ = !on_;
    countdown_ = kReload;
}
