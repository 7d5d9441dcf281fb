import 'dart:io';
import 'dart:math' show pi, sin;
import 'dart:typed_data';

import 'package:corvane/corvane.dart';
import 'package:flutter_test/flutter_test.dart';
import 'package:integration_test/integration_test.dart';

const int _sampleRate = 48000;
const int _chunks = 50;
const Duration _chunkTime = Duration(milliseconds: 20);

// A fiftieth of a second of a tone of 500 Hz.
Uint8List _tone(int index) {
  const int samples = _sampleRate ~/ _chunks;
  final Int16List pcm = Int16List(samples);
  for (int i = 0; i < samples; i++) {
    final double turns = 500 * (index * samples + i) / _sampleRate;
    pcm[i] = (8000 * sin(2 * pi * turns)).round();
  }
  return Uint8List.sublistView(pcm);
}

void main() {
  IntegrationTestWidgetsFlutterBinding.ensureInitialized();

  testWidgets('a second is recorded, flushed on the way, and sealed',
      (WidgetTester tester) async {
    final Directory folder = Directory.systemTemp.createTempSync('corvane');
    addTearDown(() => folder.deleteSync(recursive: true));
    const Corvane corvane = Corvane();
    final String path = '${folder.path}/take.aac';
    await corvane.start(
      capturePath: path,
      sampleRate: _sampleRate,
      channels: 1,
    );
    final CaptureSink sink = CaptureSink(flushEvery: _chunkTime * 10);
    await Stream<Uint8List>.periodic(_chunkTime, _tone)
        .take(_chunks)
        .pipe(sink);
    final CaptureResult result = await sink.close();

    // 47 frames, the last one padded, and one of priming.
    expect(result.path, path);
    expect(result.duration, const Duration(milliseconds: 1024));
    expect(result.bytes, File(path).lengthSync());
    final CaptureLook look = await corvane.look(capturePath: path);
    expect(
      look,
      isA<FoundCapture>()
          .having((FoundCapture found) => found.isTorn, 'is torn', isFalse)
          .having((FoundCapture found) => found.duration, 'duration',
              result.duration),
    );
  });
}
