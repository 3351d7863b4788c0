// SPDX-License-Identifier: Apache-2.0
// The state of the home: a JSON object with a member per bus object, reached by JSON pointers (RFC 6901). A
// fact that several objects show stands in one of them; a table of links leads the others to it.
#pragma once

#include <string>

#include "sim/router/json.h"

namespace router {

class State {
  public:
    explicit State(const std::string &json); // throws std::runtime_error unless it is a JSON object
    // Applies a merge patch (RFC 7396); throws the same.
    void merge(const std::string &json);

    json_object *root() const { return tree.get(); }

    // What stands at a pointer, borrowed; null when there is nothing.
    json_object *find(const std::string &pointer) const;
    // The same; throws std::runtime_error when there is nothing.
    json_object *at(const std::string &pointer) const;
    std::string text(const std::string &pointer) const;
    int integer(const std::string &pointer) const;

    // The parent must be there; "-" as last part appends to an array. Throw std::runtime_error.
    void set(const std::string &pointer, JsonRoot value);
    void set(const std::string &pointer, const std::string &value);
    void set(const std::string &pointer, int value);
    void erase(const std::string &pointer);

    // A copy of what stands at the pointer; of a whole bus object with the members that it shares with
    // others.
    JsonRoot view(const std::string &pointer) const;

  private:
    JsonRoot tree;
};

} // namespace router
