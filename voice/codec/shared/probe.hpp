// What looks into a coder at work. A coder is a template on its probe, and its probe has a function
// show(name, words), which gets what each block gives, under the name of the reference's traces.
#pragma once

namespace zsp::voice {

/// Sees nothing: the probe of a coder in use.
struct NoProbe {
    template <typename... Words>
    static void show(const char* /*name*/, const Words&... /*words*/) noexcept
    {
    }
};

} // namespace zsp::voice
