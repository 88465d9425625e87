#include "kalvo/files/json/fields.h"

#include "kalvo/files/text/input_file.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>

namespace klv {

// ---- The text, in blocks

class JsonText {
public:
    JsonText (const std::string& path, Pacer& pacer) : file_ (path), pacer_ (pacer) {}

    bool at_end () { return next_ == end_ && !refill (); }
    char peek () const { return buffer_[next_]; }
    void take () { ++next_; }

    // The line of the last character that was taken. The JSON library takes the character behind a number along with the number: a
    // newline there must not count yet.
    std::int64_t line () const { return lines_ + std::count (buffer_.begin (), last (), '\n'); }
    std::int64_t column () const
    {
        const auto newline = std::find (std::reverse_iterator (last ()), buffer_.rend (), '\n');
        const std::ptrdiff_t inside = std::reverse_iterator (last ()) - newline;
        return -inside + 1 + (newline == buffer_.rend () ? before_ : 0);
    }

private:
    std::vector<char>::const_iterator last () const
    {
        return buffer_.begin () + static_cast<std::ptrdiff_t> (next_ > 0 ? next_ - 1 : 0);
    }
    bool refill ();

    InputFile file_;
    Pacer& pacer_;
    std::vector<char> buffer_ = std::vector<char> (std::size_t{1} << 18);
    std::size_t next_ = 0, end_ = 0;
    std::int64_t lines_ = 1;     // the line in which the block begins
    std::int64_t before_ = 0;    // characters of that line before the block
};

bool JsonText::refill ()
{
    pacer_.tick ();
    const auto used = buffer_.begin () + static_cast<std::ptrdiff_t> (end_);
    const auto newlines = std::count (buffer_.begin (), used, '\n');
    const auto newline = std::find (std::reverse_iterator (used), buffer_.rend (), '\n');
    const std::ptrdiff_t behind = newline - std::reverse_iterator (used);
    const std::size_t got = file_.read (buffer_.data (), buffer_.size ());
    if (got == 0)
        return false;
    lines_ += newlines;
    before_ = newlines > 0 ? behind : before_ + behind;
    next_ = 0;
    end_ = got;
    return true;
}

class JsonIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = char;

    explicit JsonIterator (JsonText* text) : text_ (text) {}    // null: the end

    char operator* () const { return text_->peek (); }
    JsonIterator& operator++ ()
    {
        text_->take ();
        return *this;
    }
    // Only ever compared with the end.
    bool operator!= (const JsonIterator&) const { return !text_->at_end (); }
    bool operator== (const JsonIterator&) const { return text_->at_end (); }

private:
    JsonText* text_;
};

// ---- Values and their fields

// Called by the JSON library, which sees to the grammar, for each piece of a document in order.
class JsonFieldReader {
public:
    JsonFieldReader (std::vector<JsonField>& fields, const UnknownField& unknown, const JsonText& text)
        : fields_ (fields), unknown_ (unknown), text_ (text)
    {}

    std::string place () const;    // of the value that is read

    bool start_object (std::size_t);
    bool key (std::string& name);
    bool end_object ();
    bool start_array (std::size_t);
    bool end_array ();
    bool string (std::string& text);
    bool null () { return skips () || wrong_type (); }
    bool boolean (bool) { return skips () || wrong_type (); }
    bool binary (std::vector<std::uint8_t>&) { wrong_type (); }
    bool number_integer (std::int64_t value) { return number (static_cast<double> (value)); }
    bool number_unsigned (std::uint64_t value) { return number (static_cast<double> (value)); }
    bool number_float (double value, const std::string& digits);
    bool parse_error (std::size_t, const std::string&, const std::exception& fault);

private:
    bool skips (int levels = 0);
    bool takes (bool a_list, JsonKind kind) const { return field_->list == a_list && field_->kind == kind; }
    bool number (double value);
    bool name (std::string& text);
    [[noreturn]] bool wrong_type () const;

    std::vector<JsonField>& fields_;
    const UnknownField& unknown_;
    const JsonText& text_;
    JsonField document_;
    JsonField* field_ = &document_;    // its value is being read; null between the fields of an object
    std::string object_;               // path of the open object
    bool in_list_ = false;
    bool in_bytes_ = false;
    std::int64_t index_ = 0;
    std::string bytes_;
    bool skipping_ = false;
    std::size_t skipped_levels_ = 0;    // open objects and lists of a value that is skipped
};

std::string JsonFieldReader::place () const
{
    const std::string& path = field_ ? field_->path : object_;
    return in_list_ ? path + "[" + std::to_string (index_) + "]" : path;
}

// Whether the current piece of the document belongs to a value that is skipped. `levels`: 1 where the piece opens an object or a
// list, -1 where it closes one, else 0.
bool JsonFieldReader::skips (int levels)
{
    if (!skipping_)
        return false;
    skipped_levels_ += static_cast<std::size_t> (levels);
    skipping_ = skipped_levels_ > 0;
    return true;
}

bool JsonFieldReader::wrong_type () const
{
    static constexpr const char* singles[] = {"an object", "a number", "a word", "a name"};
    static constexpr const char* lists[] = {"", "a list of numbers", "a list of words", "a list of names"};
    if (in_bytes_)
        throw syntax ("the bytes of a name must be numbers from 1 to 255");
    const auto kind = static_cast<std::size_t> (field_->kind);
    throw syntax (std::string ("must be ") + (field_->list && !in_list_ ? lists : singles)[kind]);
}

bool JsonFieldReader::start_object (std::size_t)
{
    if (skips (+1))
        return true;
    if (!takes (in_list_, JsonKind::object))
        wrong_type ();
    object_ = field_->path;
    field_ = nullptr;
    return true;
}

bool JsonFieldReader::key (std::string& name)
{
    if (skips ())
        return true;
    field_ = nullptr;
    const std::string path = object_.empty () ? name : object_ + "." + name;
    const auto field = std::ranges::find (fields_, path, &JsonField::path);
    if (field == fields_.end () || name.find ('.') != name.npos) {
        unknown_ (object_, name, text_.line ());
        skipping_ = true;
        return true;
    }
    if (field->line > 0)
        throw syntax ("the field " + quote (name) + " is there twice");
    field->line = text_.line ();
    field_ = &*field;
    return true;
}

bool JsonFieldReader::end_object ()
{
    if (skips (-1))
        return true;
    field_ = nullptr;
    const std::string prefix = object_.empty () ? "" : object_ + ".";
    for (const JsonField& field : fields_) {
        if (!field.path.starts_with (prefix) || field.path.find ('.', prefix.size ()) != field.path.npos)
            continue;
        if (field.required && field.line == 0)
            throw syntax ("the field " + quote (field.path.substr (prefix.size ())) + " is missing");
    }
    const std::size_t dot = object_.rfind ('.');
    object_.resize (dot == object_.npos ? 0 : dot);
    return true;
}

bool JsonFieldReader::start_array (std::size_t)
{
    if (skips (+1))
        return true;
    if (field_->list && !in_list_) {
        in_list_ = true;
        index_ = 0;
    } else if (!in_bytes_ && takes (in_list_, JsonKind::name)) {
        in_bytes_ = true;
        bytes_.clear ();
    } else
        wrong_type ();
    return true;
}

bool JsonFieldReader::end_array ()
{
    if (skips (-1))
        return true;
    if (in_bytes_) {
        in_bytes_ = false;
        return name (bytes_);
    }
    in_list_ = false;
    return true;
}

bool JsonFieldReader::number (double value)
{
    if (skips ())
        return true;
    if (in_bytes_) {
        if (!(value >= 1 && value <= 255 && value == static_cast<unsigned char> (value)))
            wrong_type ();
        bytes_ += static_cast<char> (static_cast<unsigned char> (value));
        return true;
    }
    if (!takes (in_list_, JsonKind::number))
        wrong_type ();
    field_->take_number (value);
    ++index_;
    return true;
}

// Refuses numbers so close to zero that they would silently become zero.
bool JsonFieldReader::number_float (double value, const std::string& digits)
{
    if (!skipping_ && value == 0 && digits.find_first_of ("123456789") < digits.find_first_of ("eE"))
        throw syntax (quote (digits) + " is beyond the numbers of double precision");
    return number (value);
}

bool JsonFieldReader::string (std::string& text)
{
    if (skips ())
        return true;
    if (in_bytes_ || field_->list != in_list_)
        wrong_type ();
    switch (field_->kind) {
    case JsonKind::name:
        return name (text);
    case JsonKind::word:
        field_->take_text (text);
        ++index_;
        return true;
    case JsonKind::number:
        if (text == "Inf" || text == "-Inf")
            return number (text == "Inf" ? std::numeric_limits<double>::infinity ()
                                         : -std::numeric_limits<double>::infinity ());
        if (text == "NaN")
            return number (std::numeric_limits<double>::quiet_NaN ());
        break;
    default:
        break;
    }
    wrong_type ();
}

bool JsonFieldReader::name (std::string& text)
{
    if (text.find ('\0') != text.npos)
        throw syntax ("a name has no zero byte");
    field_->take_text (text);
    ++index_;
    return true;
}

// The JSON library's message without its place, since ours names line and path, and without the faulty text, which may be long.
bool JsonFieldReader::parse_error (std::size_t, const std::string&, const std::exception& fault)
{
    std::string_view message = fault.what ();
    if (message.find ("out_of_range") != message.npos)
        throw syntax ("a number is beyond the numbers of double precision");
    message.remove_prefix (std::min (message.find ("syntax error"), message.size ()));
    const std::size_t last_read = message.find ("; last read: '");
    const std::size_t expected = message.rfind ("'; expected ");
    std::string text (message.substr (0, last_read));
    if (last_read != message.npos && expected != message.npos && expected > last_read)
        text += message.substr (expected + 1);
    throw syntax (text);
}

// ---- Reading

void read_json_fields (const std::string& path, std::vector<JsonField>& fields, const UnknownField& unknown,
                       Pacer& pacer)
{
    JsonText text (path, pacer);
    JsonFieldReader reader (fields, unknown, text);
    try {
        nlohmann::json::sax_parse (JsonIterator (&text), JsonIterator (nullptr), &reader);
    } catch (FileFault& fault) {
        if (fault.code != KLV_RES_FILE_SYNTAX)
            throw;
        const std::string place = reader.place ();
        fault.text = "column " + std::to_string (text.column ()) + ": " + place +
                     (place.empty () ? "" : ": ") + fault.text;
        fault.line = text.line ();
        throw;
    }
}

}
