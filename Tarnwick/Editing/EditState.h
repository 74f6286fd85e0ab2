#pragma once

#include "TWCore/Model/Text.h"

#include <string>

namespace tw {

/// What is shown of one file that is being edited.
struct EditState {
    /// What the user has to decide, by its buttons.
    enum class Question {
        none,
        conflict, ///< the file on the host is not the one that was fetched
        leaving,  ///< the last save is not on the host yet
    };

    std::string connection = {};
    std::string path = {}; ///< on the host
    Text status = {};
    Text note = {}; ///< a danger in the way that saves reach the file; may be empty
    Question question = Question::none;
    bool isUploading = false;
};

} // namespace tw
