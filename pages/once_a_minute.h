#pragma once

/// Makes a page repaint once a minute: Windows sends no notice to it when the system's fonts or their
/// smoothing change.
class OnceAMinute {
public:
    /// To be called once per pass. True in the last pass of about a minute.
    bool isDue() {
        if (--passesLeft_ > 0) {
            return false;
        }
        passesLeft_ = kPasses;
        return true;
    }

    /// Of 66 ms each; those of a slide are shorter.
    static constexpr int kPasses = 900;

private:
    int passesLeft_ = kPasses;
};
