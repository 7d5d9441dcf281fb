import 'package:corvane/corvane.dart';

import 'take_store.dart';

/// The takes that were begun and not sealed, as a crash leaves them.
class UnfinishedTakes {
  /// Creates the list of those that are noted down in [store]; it is empty
  /// until [lookBack].
  UnfinishedTakes({required this.store, required this.corvane});

  /// Where they are noted down.
  final TakeStore store;

  /// The access to the plugin.
  final Corvane corvane;

  final List<FoundCapture> _found = <FoundCapture>[];

  /// Those that can be gone on with, or finished.
  List<FoundCapture> get found => _found;

  /// Looks whether there is something to recover at [path], which was noted
  /// down. When it can't be looked at, this throws, and the note stays: the
  /// take may be there all the same.
  Future<void> lookBack(String path) async {
    final CaptureLook look = await corvane.look(capturePath: path);
    switch (look) {
      case final FoundCapture capture:
        if (capture.wholeBytes > 0) {
          _found.add(capture);
        } else {
          await strikeOut(path);
        }
      case NoCapture _:
      case ForeignFile _:
        await strikeOut(path);
    }
  }

  /// Lets [seal] finish the take at [path], and strikes it out. What could not
  /// be sealed stays, unless it never will be: without a whole frame, or
  /// without a file, there is nothing left to do.
  Future<void> settle(
    String path,
    Future<CaptureResult> Function() seal,
  ) async {
    try {
      await seal();
    } on CorvaneException catch (error) {
      if (error.code == CorvaneErrorCode.verifyFailed ||
          error.code == CorvaneErrorCode.captureMissing) {
        await strikeOut(path);
      }
      rethrow;
    }
    await strikeOut(path);
  }

  /// Strikes out what is at [path].
  Future<void> strikeOut(String path) async {
    await store.strikeOut(path);
    takeUp(path);
  }

  /// Notes that somebody goes on with the take at [path].
  void takeUp(String path) {
    _found.removeWhere((FoundCapture each) => each.path == path);
  }
}
