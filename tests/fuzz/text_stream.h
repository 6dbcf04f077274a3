// A standard stream whose other end is a text.

#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace fuzz {

/// A stream that keeps what is written to it.
class text_stream {
  public:
    text_stream() : stream_(fopencookie(this, "w", {nullptr, append, nullptr, nullptr})) {
        if (stream_ == nullptr) {
            abort();
        }
        setvbuf(stream_, buffer_, _IOFBF, sizeof buffer_);
    }
    text_stream(const text_stream &) = delete;
    text_stream &operator=(const text_stream &) = delete;
    FILE *get() const {
        return stream_;
    }
    std::string take() {
        fflush(stream_);
        return std::exchange(text_, "");
    }

  private:
    static ssize_t append(void *self, const char *bytes, std::size_t count) {
        static_cast<text_stream *>(self)->text_.append(bytes, count);
        return static_cast<ssize_t>(count);
    }

    FILE *stream_;
    std::string text_;
    char buffer_[1 << 14];
};

} // namespace fuzz
