# Sums up what a take's worker asked of the system, from the log of an
# `strace -f -y`, which is to be given twice: the first time through tells which
# thread is the worker, the one that writes to the capture. Prints
#   writes to the capture: N
#   wake-ups of the main thread: N   its writes to an eventfd, GLib's way
#   other calls of the worker: N     between the first frame and the last, but
#                                    for waits for other threads and the like
# Variable: capture, the capture's name.

# A call's second half, where another thread came between, is no second call.
!/^[0-9]+ +[a-z0-9_]+\(/ { next }

{ is_frame = / write\(/ && index($0, "/" capture ">") }

NR == FNR {
  if (is_frame) worker = $1
  next
}

$1 != worker { next }

is_frame {
  if (frames++) others += since_frame
  since_frame = 0
  next
}
/ write\([0-9]+<anon_inode:\[eventfd\]>/ { ++wakes; next }
/ futex\(/ { next }
{ ++since_frame }

END {
  print "writes to the capture: " frames + 0
  print "wake-ups of the main thread: " wakes + 0
  print "other calls of the worker: " others + 0
}
