import 'dart:async';
import 'dart:io' show Platform;
import 'dart:ui' show AppExitResponse;

import 'package:flutter/material.dart';

import 'src/recorder.dart';
import 'src/recorder_page.dart';
import 'src/take_store.dart';

void main() {
  WidgetsFlutterBinding.ensureInitialized();
  final Recorder recorder =
      Recorder(store: TakeStore.ofUser(Platform.environment));
  unawaited(recorder.open());
  runApp(RecorderApp(recorder: recorder));
}

/// The example's application.
class RecorderApp extends StatefulWidget {
  /// Creates the application around its one [recorder], which it disposes of.
  const RecorderApp({required this.recorder, super.key});

  /// What records.
  final Recorder recorder;

  @override
  State<RecorderApp> createState() => _RecorderAppState();
}

class _RecorderAppState extends State<RecorderApp> {
  late final AppLifecycleListener _lifecycle;

  @override
  void initState() {
    super.initState();
    _lifecycle = AppLifecycleListener(onExitRequested: _onExitRequested);
  }

  @override
  void dispose() {
    _lifecycle.dispose();
    widget.recorder.dispose();
    super.dispose();
  }

  // The window was closed: a take is sealed first.
  Future<AppExitResponse> _onExitRequested() async {
    await widget.recorder.stop();
    return AppExitResponse.exit;
  }

  @override
  Widget build(BuildContext context) {
    return MaterialApp(
      title: 'Corvane example',
      theme: ThemeData(colorSchemeSeed: Colors.teal, useMaterial3: true),
      home: RecorderPage(recorder: widget.recorder),
    );
  }
}
