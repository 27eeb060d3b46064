#pragma once

#include <string>
#include <utility>
#include <vector>

#include "folvant/platform/Expected.h"

namespace folvant {

// Why a book operation did not happen. Operations never print: front ends render these.
struct BookError {
  enum class Kind {
    kNotFound,  // no such account, folder, entry, ...
    kExists,    // the name or thing is already there
    kInvalid,   // a value the operation cannot take
    kBusy,      // another program holds the book
    kDamaged,   // the account's file is damaged; it needs a repair
    kLocked,    // the account has a password that was not given (or not its own)
    kReadOnly,  // the book was opened for reading
    kFailed,    // the system refused (a file could not be read or written)
  };
  Kind kind = Kind::kFailed;
  std::string message;               // one line
  std::vector<std::string> details;  // what lies behind a summary, one line each
  // How the command line asks for what was refused ("--allow-duplicate-check enters it
  // again"); a front end without those options leaves it out.
  std::string hint;

  static BookError Of(Kind kind, std::string message, std::string hint = {}) {
    return {kind, std::move(message), {}, std::move(hint)};
  }
};

template <typename T>
using BookResult = Expected<T, BookError>;

}  // namespace folvant
