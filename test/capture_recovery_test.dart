import 'dart:io';

import 'package:corvane/corvane.dart';
import 'package:flutter/services.dart';
import 'package:flutter_test/flutter_test.dart';

import 'fake_plugin.dart';

// An AAC-LC frame of 171 bytes: 48000 Hz (number 3), 1 channel.
Uint8List _frame() {
  final Uint8List frame = Uint8List(171);
  frame.setAll(0, <int>[0xFF, 0xF1, 0x4C, 0x40]);
  frame.setAll(4, <int>[171 >> 3, (171 & 7) << 5 | 0x1F, 0xFC]);
  return frame;
}

List<int> _frames(int count) {
  return <int>[for (int i = 0; i < count; i++) ..._frame()];
}

void main() {
  const Corvane corvane = Corvane();
  late FakePlugin plugin;
  late Directory folder;
  late String path;

  setUp(() {
    plugin = FakePlugin();
    folder = Directory.systemTemp.createTempSync('corvane');
    path = '${folder.path}/take.aac';
  });

  tearDown(() => folder.deleteSync(recursive: true));

  test('no file, and an empty one, are no capture', () async {
    expect(await corvane.look(capturePath: path), isA<NoCapture>());
    File(path).createSync();
    expect(await corvane.look(capturePath: path), isA<NoCapture>());
  });

  test('what begins differently, and a folder, are foreign', () async {
    File(path).writeAsBytesSync(<int>[82, 73, 70, 70, ..._frames(2)]);
    expect(await corvane.look(capturePath: path), isA<ForeignFile>());
    expect(await corvane.look(capturePath: folder.path), isA<ForeignFile>());
  });

  test('what cannot be looked at is not taken for nothing', () async {
    // As in a folder that may not be searched, but for root too.
    final String behindAFile = '$path/take.aac';
    File(path).writeAsBytesSync(_frames(2));
    await expectLater(
      corvane.look(capturePath: behindAFile),
      throwsA(isA<FileSystemException>()),
    );
    await expectLater(
      corvane.findOrphans(capturePath: behindAFile),
      throwsA(isA<FileSystemException>()),
    );
  });

  test('the last channel configuration means 8 channels', () async {
    final List<int> frame = _frame();
    frame[2] |= 0x01;
    frame[3] |= 0xC0;
    File(path).writeAsBytesSync(frame);
    expect(
      await corvane.look(capturePath: path),
      isA<FoundCapture>()
          .having((FoundCapture found) => found.channels, 'channels', 8),
    );
  });

  test('a capture tells its format and how much is whole', () async {
    // More than one piece of the file is looked at.
    File(path).writeAsBytesSync(_frames(500));
    final CaptureLook look = await corvane.look(capturePath: path);
    switch (look) {
      case final FoundCapture found:
        expect(found.sampleRate, 48000);
        expect(found.channels, 1);
        expect(found.duration, const Duration(milliseconds: 10666));
        expect(found.wholeBytes, 500 * 171);
        expect(found.bytes, 500 * 171);
        expect(found.isTorn, isFalse);
      case NoCapture _:
      case ForeignFile _:
        fail('$look');
    }
  });

  test('a torn frame at the end shows', () async {
    final List<int> torn = _frame().sublist(0, 100);
    File(path).writeAsBytesSync(<int>[..._frames(3), ...torn]);
    final CaptureLook look = await corvane.look(capturePath: path);
    expect(
      look,
      isA<FoundCapture>()
          .having((FoundCapture found) => found.isTorn, 'is torn', isTrue)
          .having((FoundCapture found) => found.wholeBytes, 'whole', 3 * 171)
          .having((FoundCapture found) => found.bytes, 'bytes', 613),
    );
  });

  test('a found capture is resumed and finalized in its format', () async {
    File(path).writeAsBytesSync(_frames(2));
    plugin.answers['finalizePath'] =
        (MethodCall call) async => FakePlugin.sealedCapture;
    final FoundCapture found =
        await corvane.look(capturePath: path) as FoundCapture;
    await corvane.resumeCapture(capture: found);
    await corvane.finalizeCapture(capture: found);
    expect(plugin.methods, <String>['resumePath', 'finalizePath']);
    for (final MethodCall call in plugin.calls) {
      final Map<Object?, Object?> arguments =
          call.arguments as Map<Object?, Object?>;
      expect(arguments['capturePath'], path);
      expect(arguments['sampleRate'], 48000);
      expect(arguments['channels'], 1);
      expect(arguments['bitRate'], 64000);
    }
  });

  test('orphans are found in their order', () async {
    final List<String> orphans = <String>[
      '${folder.path}/take.orphan.aac',
      '${folder.path}/take.orphan2.aac',
      '${folder.path}/take.orphan10.aac',
    ];
    for (final String orphan in orphans) {
      File(orphan).createSync();
    }
    expect(await corvane.findOrphans(capturePath: path), orphans);
  });
}
