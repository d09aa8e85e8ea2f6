#pragma once

namespace platform::curl {

// The process-wide state of libcurl and of the libraries below it. Those clear theirs while the process ends, under the
// feet of a thread that is decrypting; so each call of the transfer thread into libcurl is a Use, and when the process
// begins to end, new ones are refused and running ones waited for, for a moment.
class CurlLibrary {
public:
    // Makes the library ready, once. Whether it is. From any thread.
    static bool initialize();

    // Whether the process is ending; libcurl may not be used any more.
    static bool isEnding();

    class Use {
    public:
        Use();
        ~Use();
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        bool isGranted() const { return granted_; }

    private:
        bool granted_;
    };
};

} // namespace platform::curl
