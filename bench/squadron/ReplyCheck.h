#pragma once
// Checks the replies one player gets to its own requests, one request at a time, among the
// broadcasts that may come in between (PLSNEW, PLSDEL, PLSUPD of others, AWANUM, SIMNUM,
// SYNCRO). It also follows the player's own position in the list, which moves down when an
// earlier player leaves.
#include <string>
#include <string_view>

class ReplyCheck {
  public:
    enum class Kind { None, Register, PlayerList, SetupList, Setup, Verdict, ErrorList };
    enum class Result { Pending, Ok, Bad };

    explicit ReplyCheck(std::string ownName) : own_(std::move(ownName)) {}

    // Starts waiting for the reply to one request. For Verdict, `expected` is the mark
    // ("O" or "X"); for ErrorList, `position` is the one asked for and `expected` the number
    // of errors when it is the player's own list.
    void expect(Kind kind, int position = 0, int expectedCount = -1, std::string expectedMark = {});
    void abandon() { kind_ = Kind::None; }
    void reset(); // a new connection: nothing known
    Kind pending() const { return kind_; }

    // Feeds one received message; Ok or Bad when it completes the pending reply.
    Result feed(std::string_view command, std::string_view data);

    int ownPosition() const { return ownPosition_; }
    int setupCount() const { return setupCount_; }
    int lineCount() const { return lineCount_; }
    int stray() const { return stray_; }

  private:
    Result finish(bool ok);

    std::string own_;
    Kind kind_ = Kind::None;
    int stage_ = 0, count_ = 0, next_ = 0;
    int position_ = 0, expectedCount_ = -1;
    std::string expectedMark_;
    bool shifted_ = false; // the list moved while the request was under way
    int ownPosition_ = 0, setupCount_ = 0, lineCount_ = 0;
    int stray_ = 0;
};
