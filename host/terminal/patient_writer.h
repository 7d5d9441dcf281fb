// Writing to somebody who may not be reading: a terminal that Ctrl-S has
// stopped, a pipe that is full. A take must not wait for them.
#ifndef CORVANE_HOST_TERMINAL_PATIENT_WRITER_H_
#define CORVANE_HOST_TERMINAL_PATIENT_WRITER_H_

#include <chrono>
#include <memory>
#include <string_view>

namespace corvane {

// From any thread.
class PatientWriter {
 public:
  // `fd` is borrowed and must stay open for as long as something may still be
  // written, behind this object's end too.
  explicit PatientWriter(int fd);
  // Waits a second for what is still to be written; the rest is lost.
  ~PatientWriter();
  PatientWriter(const PatientWriter&) = delete;
  PatientWriter& operator=(const PatientWriter&) = delete;

  // Returns at once. What nobody reads is kept up to 64 KiB; the rest is lost.
  void Write(std::string_view text);

  // Whether something is still to be written.
  bool is_behind() const;

  // Waits until it isn't, or so long.
  void Flush(std::chrono::milliseconds patience);

 private:
  struct State;  // shared with a thread that may never come back

  const std::shared_ptr<State> state_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_PATIENT_WRITER_H_
