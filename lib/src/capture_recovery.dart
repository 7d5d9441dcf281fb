import 'dart:io';

import 'capture_look.dart';
import 'capture_result.dart';
import 'corvane.dart';

/// What an application's start screen needs after a crash.
///
/// ```dart
/// final CaptureLook look = await corvane.look(capturePath: path);
/// if (look is FoundCapture) {
///   await corvane.resumeCapture(capture: look);
/// }
/// ```
///
/// A file doesn't say whether it was sealed. An application that wants to know
/// notes down the path of a take when it starts it, and strikes it out when it
/// has stopped it: what is noted down at the next start was interrupted.
extension CaptureRecovery on Corvane {
  /// Whether there is a capture at [capturePath], and how much it holds.
  ///
  /// Nothing is changed. The whole file is walked through, so a long capture
  /// takes a moment. Throws a [FileSystemException] when it can't be read, and
  /// when it can't be told whether there is one, as in a folder that may not be
  /// searched: that is no [NoCapture].
  Future<CaptureLook> look({required String capturePath}) {
    return lookAtCapture(capturePath);
  }

  /// Begins a take that goes on in [capture], in the format that it has: the
  /// microphone has to deliver [FoundCapture.sampleRate] and
  /// [FoundCapture.channels]. The [bitRate] in bit/s may be another one.
  Future<void> resumeCapture({
    required FoundCapture capture,
    int bitRate = Corvane.defaultBitRate,
  }) {
    return resumePath(
      capturePath: capture.path,
      sampleRate: capture.sampleRate,
      channels: capture.channels,
      bitRate: bitRate,
    );
  }

  /// Seals [capture]: what a crash has torn is cut off, and the rest is made
  /// durable and verified.
  Future<CaptureResult> finalizeCapture({required FoundCapture capture}) {
    return finalizePath(
      capturePath: capture.path,
      sampleRate: capture.sampleRate,
      channels: capture.channels,
    );
  }

  /// The paths to which earlier calls of `start` have moved what they found at
  /// [capturePath], in the order of their numbers. Nothing ever removes them.
  /// Throws a [FileSystemException] when it can't be told what is there.
  Future<List<String>> findOrphans({required String capturePath}) async {
    final List<String> found = <String>[];
    for (int slot = 0; slot < _orphanSlots; slot++) {
      final String path = _orphanPath(capturePath, slot);
      if (await isThere(path)) {
        found.add(path);
      }
    }
    return found;
  }
}

const String _orphanInfix = '.orphan';
const int _orphanSlots = 100;

// take.aac gives take.orphan.aac, take.orphan1.aac and so on. A dot in the name
// of a directory splits nothing.
String _orphanPath(String capturePath, int slot) {
  final int slash = capturePath.lastIndexOf('/');
  final int dot = capturePath.lastIndexOf('.');
  final int stemEnd = dot > slash ? dot : capturePath.length;
  final String stem = capturePath.substring(0, stemEnd);
  final String suffix = capturePath.substring(stemEnd);
  final String number = slot == 0 ? '' : '$slot';
  return '$stem$_orphanInfix$number$suffix';
}
