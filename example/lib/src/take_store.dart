import 'dart:io';

import 'package:corvane/corvane.dart';

/// The folder of the takes, and the note of the one that is being recorded.
///
/// A capture doesn't say whether it was sealed. So the path of a take is noted
/// down when it begins and struck out when it is sealed: what is still noted
/// down when the application starts was interrupted.
class TakeStore {
  /// Creates a store of the takes in [folder].
  TakeStore({required this.folder});

  /// Creates a store in the user's folder for applications' data.
  factory TakeStore.ofUser() {
    final Map<String, String> environment = Platform.environment;
    final String home = environment['HOME'] ?? '.';
    final String data = environment['XDG_DATA_HOME'] ?? '$home/.local/share';
    return TakeStore(folder: Directory('$data/corvane_example').absolute);
  }

  /// Where the takes are.
  final Directory folder;

  File get _note => File('${folder.path}/unfinished');

  /// The path of a take that begins [now].
  String newPath(DateTime now) {
    final String stamp =
        now.toIso8601String().split('.').first.replaceAll(':', '-');
    return '${folder.path}/take-$stamp.aac';
  }

  /// The path that is noted down, or null when every take was sealed.
  Future<String?> unfinished() async {
    return await _note.exists() ? (await _note.readAsString()).trim() : null;
  }

  /// Notes [path] down as the take that is being recorded.
  Future<void> noteDown(String path) async {
    await folder.create(recursive: true);
    await _note.writeAsString(path, flush: true);
  }

  /// Strikes out what is noted down.
  Future<void> strikeOut() async {
    if (await _note.exists()) {
      await _note.delete();
    }
  }

  /// The captures in the folder, the newest first.
  Future<List<FoundCapture>> captures(Corvane corvane) async {
    if (!await folder.exists()) {
      return <FoundCapture>[];
    }
    final List<FoundCapture> found = <FoundCapture>[];
    await for (final FileSystemEntity entity in folder.list()) {
      if (entity.path.endsWith('.aac')) {
        final CaptureLook look = await corvane.look(capturePath: entity.path);
        if (look is FoundCapture) {
          found.add(look);
        }
      }
    }
    found.sort((FoundCapture a, FoundCapture b) => b.path.compareTo(a.path));
    return found;
  }
}
