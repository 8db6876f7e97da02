#include "platform/cli/batch.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/libconfd/peer.h"

namespace standin::cli {
namespace {

struct BatchRun {
  int status = -1;
  std::string out, errors;
  std::vector<Op> asked;
};

// The answers behind that of nb_open; after the last the server goes.
BatchRun run(const std::string& lines, const std::vector<std::string>& answers, bool keep_going) {
  BatchRun ran;
  Peer server([&](Op op, FrameReader&) {
    if (ran.asked.size() > answers.size()) return std::string();
    ran.asked.push_back(op);
    return op == Op::nb_open ? ok_answer().put(7u).take() : answers[ran.asked.size() - 2];
  });
  const auto* address = reinterpret_cast<const sockaddr_in*>(server.address());
  Server connection(ntohs(address->sin_port), Server::Access::write);
  std::istringstream in(lines);
  std::ostringstream out, errors;
  Context context{connection, out, in};
  ran.status = run_batch(context, errors, keep_going);
  ran.out = out.str();
  ran.errors = errors.str();
  return ran;
}

std::string done() { return ok_answer().take(); }
std::string not_there() { return ok_answer().put_nil().put(false).take(); }
std::string refused(ErrorCode code, const char* text) { return refusal(code).put(text).take(); }

TEST(CliBatch, AnswersStandInOrderAndCommitEndsIt) {
  const BatchRun ran =
      run("# comment\n\nget /a\nget /b\nget /c\nexists /d\nset /e x\nkeys /f\n",
          {ok_answer().put("text").put(false).take(),
           ok_answer().put(std::vector<std::string>{"x", "y z", ""}).put(true).take(), not_there(),
           ok_answer().put(false).take(), done(),
           ok_answer()
               .array(2)
               .put(std::vector<std::string>{"k"})
               .put(std::vector<std::string>{"a b", "c"})
               .take(),
           done()},
          false);
  EXPECT_EQ(ran.status, kDone);
  EXPECT_EQ(ran.out, "text\nx \"y z\" \"\"\nnot there\nfalse\nk\n\"a b\" c\n");
  EXPECT_EQ(ran.errors, "");
  EXPECT_EQ(ran.asked, (std::vector{Op::nb_open, Op::nb_get, Op::nb_get, Op::nb_get, Op::nb_exists,
                                    Op::nb_set, Op::nb_keys, Op::nb_commit}));
}

TEST(CliBatch, FirstErrorAbortsIt) {
  const BatchRun ran =
      run("create /a\ncreate /b\n", {refused(ErrorCode::failed, "no\nway"), done()}, false);
  EXPECT_EQ(ran.status, kRefused);
  EXPECT_EQ(ran.out, "");
  EXPECT_EQ(ran.errors, "error: no way\n");
  EXPECT_EQ(ran.asked, (std::vector{Op::nb_open, Op::nb_create, Op::nb_abort}));
}

TEST(CliBatch, KeepsGoingWhenAsked) {
  const BatchRun ran = run("create /a\nfrobnicate\nget a\nget \"\ncreate /b\n",
                           {refused(ErrorCode::failed, "no way"), done(), done()}, true);
  EXPECT_EQ(ran.status, kRefused);
  EXPECT_EQ(ran.errors, "");
  std::istringstream lines(ran.out);
  int errors = 0;
  for (std::string line; std::getline(lines, line); ++errors)
    EXPECT_TRUE(line.starts_with("error: "));
  EXPECT_EQ(errors, 4);
  EXPECT_EQ(ran.asked, (std::vector{Op::nb_open, Op::nb_create, Op::nb_create, Op::nb_commit}));
}

TEST(CliBatch, RefusedCommitAtTheEndIsAnError) {
  for (const bool keep_going : {false, true}) {
    const BatchRun ran = run("", {refused(ErrorCode::conflict, "too late")}, keep_going);
    EXPECT_EQ(ran.status, kRefused);
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(ran.errors, "error: too late\n");
  }
}

TEST(CliBatch, SecretIsReadFromTheNextLine) {
  FrameWriter described = ok_answer();
  described.put("/a").put("leaf").put("string").put("").put("").put_nil().put("A password.");
  described.put(true).put(false).array(0).array(0).array(0).array(0);
  const std::string secret = described.take();
  const BatchRun ran =
      run("set /a\n pass \"word\nget /b\n", {secret, done(), not_there(), done()}, false);
  EXPECT_EQ(ran.status, kDone);
  EXPECT_EQ(ran.out, "not there\n");
  EXPECT_EQ(ran.asked,
            (std::vector{Op::nb_open, Op::nb_describe, Op::nb_set, Op::nb_get, Op::nb_commit}));
}

TEST(CliBatch, ServerThatGoesIsAnErrorOfItsOwn) {
  EXPECT_THROW(run("get /a\nget /b\n", {not_there()}, true), ConnectionLost);
  EXPECT_THROW(run("get /a\n", {std::string("\0\0\0\1\xc1", 5)}, true), WireError);
}

}  // namespace
}  // namespace standin::cli
