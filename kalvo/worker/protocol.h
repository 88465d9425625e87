// What messages between a calling process and a worker say (docs/worker.md).
#pragma once

#include "kalvo/solve/solver.h"
#include "kalvo/worker/message.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace klv {

// To the worker: what to solve, and what is known already. Names stay with the caller.
struct Request {
    double elapsed = 0;           // seconds since the optimisation began
    double most_megabytes = 0;    // of memory; infinite: no limit
    bool integers = false;
    Parameters parameters;
    Information information;
    Solutions earlier;
    std::vector<Past> past;
};

// From the worker, while it solves.
struct Line {
    Kind kind = Kind::message;
    std::string text;
};
struct Question {
    std::uint32_t caller = 0;    // KLVcallercode
};
struct BegunRun {
    Begun begun;
    std::string engine;
};
struct NewIncumbent {
    std::vector<double> x;
};
using Item = std::variant<Line, Question, BegunRun, Past, NewIncumbent>;

struct News {
    Information information;
    std::vector<Item> items;    // in their order
};

struct Result {
    News news;        // since the last message
    Solved solved;    // of each answer only the claim
};

// Readers throw BrokenMessage.
void write (Writer& to, const Request& request, const Problem& problem);
Request read_request (const Message& message,
                      Problem& problem);    // the problem reads its matrix from the message
void write (Writer& to, const News& news);
News read_news (const Message& message);
void write (Writer& to, const Result& result);
Result read_result (const Message& message);

}
