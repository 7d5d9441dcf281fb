import 'dart:io';

import 'package:corvane_example/src/take_store.dart';
import 'package:flutter_test/flutter_test.dart';

void main() {
  late TakeStore store;

  setUp(() {
    final Directory folder = Directory.systemTemp.createTempSync('corvane');
    addTearDown(() => folder.deleteSync(recursive: true));
    store = TakeStore(folder: folder);
  });

  test('takes go to the folder that the desktop names', () {
    String folderWith(String named) {
      return TakeStore.ofUser(
        <String, String>{'HOME': '/home/me', 'XDG_DATA_HOME': named},
      ).folder.path;
    }

    expect(folderWith('/data'), '/data/corvane_example');
    for (final String named in <String>['', 'relative']) {
      expect(folderWith(named), '/home/me/.local/share/corvane_example');
    }
    expect(
      TakeStore.ofUser(<String, String>{'HOME': '/home/me'}).folder.path,
      '/home/me/.local/share/corvane_example',
    );
  });

  test('a take that begins strikes no other one out', () async {
    expect(await store.unfinished(), isEmpty);
    await store.noteDown('/a.aac');
    await store.noteDown('/b.aac');
    await store.noteDown('/a.aac');
    expect(await store.unfinished(), <String>['/a.aac', '/b.aac']);

    await store.strikeOut('/a.aac');
    await store.strikeOut('/c.aac');
    expect(await store.unfinished(), <String>['/b.aac']);
  });
}
