// The running program as a whole. Main thread only.
#pragma once

namespace Platform {

class Application {
public:
    virtual ~Application() = default;

    // Ends the main loop in an orderly way once the current task has returned: overlays
    // gone, cursor back, grabs freed, exit status 0.
    virtual void terminate() = 0;
};

}  // namespace Platform
