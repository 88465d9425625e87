#include "kalvo/task/task.h"

#include "kalvo/model/text.h"

#include <utility>

using namespace klv;

std::shared_ptr<const Problem> KLV_task::share_problem () const
{
    lent_ = true;
    return problem_;
}

Problem& KLV_task::edit_problem ()
{
    if (lent_) {
        if (problem_.use_count () > 1)
            problem_ = std::make_shared<Problem> (*problem_);
        else
            std::shared_ptr<Problem> (problem_)
                .reset ();    // orders the last reader's accesses before the changes that follow
        lent_ = false;
    }
    conflict.members.clear ();
    return *problem_;
}

void KLV_task::replace_problem (Problem&& problem)
{
    problem_ = std::make_shared<Problem> (std::move (problem));
    lent_ = false;
    conflict.members.clear ();
    drop_solutions ();
}

void KLV_task::drop_solutions ()
{
    for (std::optional<Solution>& solution : solutions)
        solution.reset ();
}

KLVrescode_t KLV_task::fail (KLVrescode_t code, std::string message)
{
    last_error_ = {code, std::move (message)};
    if (streams.anyone_listens (Kind::error))
        streams.print (Kind::error, text ("Error ", code, ": ", last_error_.message));
    return code;
}

void KLV_task::warn (std::string_view message)
{
    streams.print (Kind::warning, text ("Warning: ", message));
}

void KLV_task::say (std::string_view message)
{
    streams.print (Kind::message, message);
}

void KLV_task::set_callback (KLVcallbackfunc func, void* handle)
{
    callback_ = func;
    callback_handle_ = handle;
}

std::int32_t KLV_task::ask_callback (std::uint32_t caller)
{
    asked_ = Clock::now ();
    information.set (RealItem::progress_time, std::chrono::duration<double> (asked_ - began_).count ());
    return callback_ != nullptr ? callback_ (this, callback_handle_, caller, nullptr, nullptr, nullptr) : 0;
}

std::int32_t KLV_task::ask_callback_in_time (std::uint32_t caller)
{
    return Clock::now () - asked_ >= std::chrono::milliseconds (20) ? ask_callback (caller) : 0;
}

std::int32_t KLV_task::ask_callback_while_loading (std::size_t work)
{
    // An entry takes some nanoseconds, an operation as long as several entries.
    work_ += work + 16;
    if (work_ < 100'000)
        return 0;
    work_ = 0;
    return ask_callback_in_time (KLV_CALLER_LOAD);
}

KLVrescode_t KLV_task::refuses (Access access) const
{
    if (access == Access::change && running_ > 0)
        return KLV_RES_TASK_BUSY;
    return unusable_ ? KLV_RES_TASK_UNUSABLE : KLV_RES_OK;
}

void KLV_task::make_unusable (std::string_view message) noexcept
{
    unusable_ = true;
    last_error_.code = KLV_RES_INTERNAL;
    last_error_.message.clear ();
    try {
        last_error_.message = message;
    } catch (...) {    // no memory for the message: the code remains
    }
}

KLVrescode_t KLV_task::note_out_of_memory () noexcept
{
    last_error_.code = KLV_RES_OUT_OF_MEMORY;
    last_error_.message.clear ();
    return KLV_RES_OUT_OF_MEMORY;
}

KLVrescode_t klv::stop_code (std::int32_t answer)
{
    if (answer == 0)
        return KLV_RES_OK;
    return answer == KLV_RES_OUT_OF_MEMORY ? KLV_RES_OUT_OF_MEMORY : KLV_RES_USER_STOP;
}
