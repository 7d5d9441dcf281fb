import 'package:corvane/corvane.dart';
import 'package:flutter/material.dart';

import 'recorder.dart';
import 'recorder_phase.dart';
import 'transport.dart';

/// The captures that are there, each with its state.
class CaptureList extends StatelessWidget {
  /// Creates the list of the captures that [recorder] knows of.
  const CaptureList({required this.recorder, super.key});

  /// Whose captures these are.
  final Recorder recorder;

  @override
  Widget build(BuildContext context) {
    final List<FoundCapture> captures = recorder.captures;
    if (captures.isEmpty) {
      return const Center(child: Text('No takes yet'));
    }
    return ListView.builder(
      itemCount: captures.length,
      itemBuilder: (BuildContext context, int index) => _tile(captures[index]),
    );
  }

  Widget _tile(FoundCapture capture) {
    final bool isInterrupted = recorder.interrupted
        .any((FoundCapture each) => each.path == capture.path);
    final bool needsCare = isInterrupted || capture.isTorn;
    return ListTile(
      leading: Icon(needsCare ? Icons.warning_amber : Icons.graphic_eq),
      title: Text(capture.path.split('/').last),
      subtitle: Text(
        '${clockOf(capture.duration)}, ${capture.sampleRate} Hz, '
        '${capture.bytes} bytes, ${_stateOf(capture, isInterrupted)}',
      ),
      trailing: needsCare && recorder.phase == RecorderPhase.idle
          ? TextButton(
              onPressed: () => recorder.finish(capture),
              child: const Text('Finish'),
            )
          : null,
    );
  }

  String _stateOf(FoundCapture capture, bool isInterrupted) {
    if (isInterrupted) {
      return 'interrupted';
    }
    if (capture.isTorn) {
      return 'torn at the end';
    }
    return capture.path.contains('.orphan') ? 'moved aside' : 'whole';
  }
}
