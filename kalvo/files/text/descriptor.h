// An open file's descriptor, closed by the destructor.
#pragma once

#include <unistd.h>

namespace klv {

class Descriptor {
public:
    explicit Descriptor (int number = -1) : number_ (number) {}
    Descriptor (const Descriptor&) = delete;
    Descriptor& operator= (const Descriptor&) = delete;
    ~Descriptor () { close (); }

    void open (int number) { number_ = number; }
    bool is_open () const { return number_ >= 0; }
    operator int () const { return number_; }

    // Closes the file. Other than 0: the last bytes may not have found room.
    int close ()
    {
        const int number = number_;
        number_ = -1;
        return number >= 0 ? ::close (number) : 0;
    }

private:
    int number_;
};

}
