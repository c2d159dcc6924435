// The error of an object in JSON that says it is something nobody knows.
#pragma once

#include <exception>
#include <memory>
#include <string>

#include "Zorvane/ZVError.hpp"

namespace zorvane {

/// Thrown for an element of a side file whose "type" isn't listed, such as one that a later version wrote. A host may
/// catch it to pass over such an element.
class UnknownDiscriminator : public ZVDescribedError {
  public:
    UnknownDiscriminator(std::exception_ptr underlyingError, std::string field, std::string value);

    /// What the decoder said; it knows the path.
    const std::exception_ptr& underlyingError() const { return details_->underlyingError; }
    /// The key, such as "type".
    const std::string& field() const { return details_->field; }
    /// The text found there.
    const std::string& value() const { return details_->value; }

  private:
    struct Details {
        std::exception_ptr underlyingError;
        std::string field;
        std::string value;
    };

    std::shared_ptr<const Details> details_;
};

}  // namespace zorvane
