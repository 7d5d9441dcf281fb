import 'dart:io';

import 'package:corvane/corvane.dart';

/// The folder of the takes, and the note of those that aren't sealed.
///
/// A capture doesn't say whether it was sealed. So the path of a take is noted
/// down when it begins and struck out when it is sealed: what is still noted
/// down when the application starts was interrupted.
class TakeStore {
  /// Creates a store of the takes in [folder].
  TakeStore({required this.folder});

  /// Creates a store in the user's folder for applications' data, as
  /// [environment] names it. A relative path there counts as none, and so does
  /// an empty one.
  factory TakeStore.ofUser(Map<String, String> environment) {
    final String home = environment['HOME'] ?? '.';
    final String named = environment['XDG_DATA_HOME'] ?? '';
    final String data = named.startsWith('/') ? named : '$home/.local/share';
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

  /// The paths that are noted down, in the order in which the takes began.
  Future<List<String>> unfinished() async {
    try {
      return await _note.readAsLines();
    } on PathNotFoundException {
      return <String>[];
    }
  }

  /// Notes [path] down as a take that is being recorded, below those that
  /// nothing was done about.
  Future<void> noteDown(String path) async {
    await folder.create(recursive: true);
    final List<String> paths = await unfinished();
    if (!paths.contains(path)) {
      await _write(<String>[...paths, path]);
    }
  }

  /// Strikes [path] out.
  Future<void> strikeOut(String path) async {
    final List<String> paths = await unfinished();
    if (paths.remove(path)) {
      await _write(paths);
    }
  }

  // The old note stays until the new one is on the disk.
  Future<void> _write(List<String> paths) async {
    final File next = File('${_note.path}.new');
    await next.writeAsString(
      paths.map<String>((String path) => '$path\n').join(),
      flush: true,
    );
    await next.rename(_note.path);
  }

  /// The captures in the folder, the newest first.
  Future<List<FoundCapture>> captures(Corvane corvane) async {
    final List<FoundCapture> found = <FoundCapture>[];
    try {
      await for (final FileSystemEntity entity in folder.list()) {
        if (entity.path.endsWith('.aac')) {
          final CaptureLook look = await corvane.look(capturePath: entity.path);
          if (look is FoundCapture) {
            found.add(look);
          }
        }
      }
    } on PathNotFoundException {
      return <FoundCapture>[]; // there was no take yet
    }
    found.sort((FoundCapture a, FoundCapture b) => b.path.compareTo(a.path));
    return found;
  }
}
